// CRowStore: life and appending.
//
// Invariants. CheckInvariants checks 1 to 4 in debug builds.
//  1. `index` has 8 bytes for each place: the lower 48 bits are the position in `data` of the row's
//     form, the upper 16 its length, or kLengthBefore when the length is in the 4 bytes before it.
//  2. There are at most 2^32 - 1 places. Rows are numbered by them without the deleted ones.
//  3. While stage is Idle, isInValue is false. Else the form has the values of the columns before
//     `next` (of an update: of the one column, when next == end).
//  4. cursorColumn is at most the number of columns, cursorOffset at most cursorSize.
//  5. The form at an entry's position begins with the values of all columns; what follows up to
//     its length is room that an update has left. A form of up to kTogether bytes lies in one page.
//  6. Long values never move. `values` may have bytes that no form names: of updated values,
//     deleted rows and rows that were given up.
//  7. While cursorRow is not kNoRow and cursorGeneration is the allowance's generation, cursorBytes
//     are the bytes of that row's form.

#include "src/bytestore/RowStoreState.h"

#include <algorithm>
#include <cassert>
#include <cstring>

using vnbytstr::detail::RowForm;
using vnbytstr::detail::WithMemoryException;

namespace {

constexpr DWORD kPageSize = CBytePage::m_dwPageSize;
constexpr DWORD kMinPages = 8;

} // namespace

CRowStore::CRowStore(int columns, DWORD cachePages, DWORD segmentBytes) {
    if (columns < 0 || columns > kMaxColumns)
        State::ThrowOutOfRange();
    const DWORD segment = std::clamp(segmentBytes, kPageSize, kDefaultSegment);
    m_state = WithMemoryException([&] {
        return std::make_unique<State>(columns, std::max(cachePages, kMinPages) - State::kTails,
                                       segment / kPageSize * kPageSize);
    });
}

CRowStore::~CRowStore() = default;

int CRowStore::GetColumnCount() const { return m_state->columns; }
DWORD CRowStore::GetRowCount() const { return m_state->GetRowCount(); }

void CRowStore::Empty() noexcept {
    CancelRow();
    m_state->ForgetRow();
    m_state->data.Empty();
    m_state->index.Empty();
    m_state->values.Empty();
    m_state->places = 0;
    m_state->deleted.Clear();
}

void CRowStore::ReleasePages() {
    m_state->data.ReleasePages();
    m_state->index.ReleasePages();
    m_state->values.ReleasePages();
}

DWORD CRowStore::GetResidentPageCount() const {
    return m_state->allowance.GetResidentPageCount() + m_state->data.HasTail() +
           m_state->index.HasTail() + m_state->values.HasTail() + m_state->allowance.HasSpare();
}

// --- a row ---------------------------------------------------------------------------------------

void CRowStore::BeginRow() {
    CancelRow();
    m_state->Begin(State::Stage::Row, 0, m_state->columns);
}

void CRowStore::CancelRow() noexcept { m_state->Cancel(); }

void CRowStore::EndRow() {
    m_state->Guarded([this] {
        if (m_state->stage != State::Stage::Row || m_state->isInValue)
            State::ThrowOutOfRange();
        while (m_state->next < m_state->end)
            AppendNull();
        m_state->AppendRow();
    });
    m_state->stage = State::Stage::Idle;
    m_state->next = m_state->end = 0;
    m_state->CheckInvariants();
}

void CRowStore::State::Begin(Stage newStage, int first, int last) {
    stage = newStage;
    next = first;
    end = last;
    formSize = 0;
    valuesBefore = values.GetLength();
}

void CRowStore::State::Cancel() noexcept {
    if (stage == Stage::Idle)
        return;
    values.Rollback(valuesBefore);
    stage = Stage::Idle;
    isInValue = false;
    next = end = 0;
}

/// Appends a row's form to `data`; its entry for the index. After an exception nothing is there.
ULONGLONG CRowStore::State::StoreRow(const BYTE* bytes, std::size_t size) {
    const ULONGLONG before = data.GetLength();
    try {
        if (size <= kTogether && data.RoomInPage() < size)
            data.SkipToNextPage();
        if (size >= kLengthBefore) {
            const auto length = static_cast<DWORD>(size);
            data.Append(reinterpret_cast<const BYTE*>(&length), sizeof length);
        }
        const ULONGLONG position = data.GetLength();
        if (position >> kPositionBits != 0)
            throw new CCacheException(CCacheException::kTooLong);
        data.Append(bytes, size);
        return position | ULONGLONG{std::min<std::size_t>(size, kLengthBefore)} << kPositionBits;
    } catch (...) {
        data.Rollback(before);
        throw;
    }
}

void CRowStore::State::AppendRow() {
    if (places == kNoRow)
        throw new CCacheException(CCacheException::kTooLong);
    const ULONGLONG before = data.GetLength();
    const ULONGLONG entry = StoreRow(form.get(), formSize);
    try {
        index.Append(reinterpret_cast<const BYTE*>(&entry), sizeof entry);
    } catch (...) {
        data.Rollback(before);
        throw;
    }
    ++places;
}

void CRowStore::State::GrowForm(std::size_t room) {
    const std::size_t wanted = std::max({formSize + room, formRoom * 2, std::size_t{256}});
    auto larger =
        WithMemoryException([&] { return std::make_unique_for_overwrite<BYTE[]>(wanted); });
    if (formSize > 0)
        std::memcpy(larger.get(), form.get(), formSize);
    form = std::move(larger);
    formRoom = wanted;
}

// --- values --------------------------------------------------------------------------------------

void CRowStore::AppendNull() {
    m_state->Guarded([this] {
        BYTE* at = m_state->NextValue(1);
        *at = RowForm::kNull;
        m_state->EndValueAt(at + 1);
    });
}

void CRowStore::AppendInteger(LONGLONG value) {
    m_state->Guarded([=, this] {
        m_state->EndValueAt(RowForm::PutInteger(m_state->NextValue(RowForm::kMaxHead), value));
    });
}

void CRowStore::AppendReal(double value) {
    m_state->Guarded([=, this] {
        m_state->EndValueAt(RowForm::PutReal(m_state->NextValue(RowForm::kMaxHead), value));
    });
}

void CRowStore::Append(const CRowValue& value) {
    if (value.m_type >= rowDecimal) {
        m_state->Guarded([&] {
            if (value.m_isLong)
                State::ThrowOutOfRange();
            m_state->PutLying(value, reinterpret_cast<const BYTE*>(value.m_value));
        });
    } else if (value.m_type == rowInteger) {
        AppendInteger(value.GetInteger());
    } else if (value.m_type == rowReal) {
        AppendReal(value.GetReal());
    } else {
        AppendNull();
    }
}

/// Appends a value of bytes, in the row where that is short enough, else in `values`.
void CRowStore::State::PutLying(const CRowValue& value, const BYTE* bytes) {
    const DWORD length = value.m_length;
    if (length > kAlwaysInRow && (length > kTogether || formSize + length > kPageSize)) [[unlikely]]
        return PutApart(value, bytes);
    BYTE* at = NextValue(RowForm::kMaxHead + length);
    at = RowForm::PutHead(at, value.m_type, value.m_ccsid, length);
    if (length > 0) // memcpy would become a string instruction, as the compiler knows the range
        std::memmove(at, bytes, length);
    EndValueAt(at + length);
}

void CRowStore::State::PutApart(const CRowValue& value, const BYTE* bytes) {
    BYTE* at = NextValue(RowForm::kMaxHead);
    const ULONGLONG position = values.GetLength();
    values.Append(bytes, value.m_length);
    EndValueAt(RowForm::PutLong(at, value.m_type, value.m_ccsid, position, value.m_length));
}

void CRowStore::BeginValue(ERowValueType type, WORD ccsid) {
    m_state->Guarded([=, this] {
        if (type < rowDecimal || type > rowBytes)
            State::ThrowOutOfRange();
        m_state->NextValue(RowForm::kMaxHead);
        m_state->isInValue = true;
        m_state->valueType = type;
        m_state->valueCcsid = type == rowText ? ccsid : WORD{0};
        m_state->isValueLong = false;
        m_state->valueLength = 0;
        m_state->pieces.clear();
    });
}

void CRowStore::AppendPiece(std::span<const BYTE> bytes) {
    State& state = *m_state;
    state.Guarded([&] {
        if (!state.isInValue)
            State::ThrowOutOfRange();
        const ULONGLONG length = state.valueLength + bytes.size();
        if (length > 0xFFFFFFFFu || bytes.size() > 0xFFFFFFFFu)
            throw new CCacheException(CCacheException::kTooLong);
        // A piece of the store itself is at most a page, and copied before any page moves.
        if (!state.isValueLong && bytes.size() <= kPageSize) {
            WithMemoryException(
                [&] { state.pieces.insert(state.pieces.end(), bytes.begin(), bytes.end()); });
            bytes = {};
        }
        if (!state.isValueLong && length > State::kTogether) {
            state.valueBegin = state.values.GetLength();
            state.values.Append(state.pieces.data(), state.pieces.size());
            state.isValueLong = true;
        }
        state.values.Append(bytes.data(), bytes.size());
        state.valueLength = length;
    });
}

void CRowStore::EndValue() {
    State& state = *m_state;
    state.Guarded([&] {
        if (!state.isInValue)
            State::ThrowOutOfRange();
        state.isInValue = false;
        const auto length = static_cast<DWORD>(state.valueLength);
        if (!state.isValueLong) {
            state.PutLying({state.valueType, state.valueCcsid, length, 0}, state.pieces.data());
            return;
        }
        BYTE* at = state.NextValue(RowForm::kMaxHead);
        state.EndValueAt(
            RowForm::PutLong(at, state.valueType, state.valueCcsid, state.valueBegin, length));
    });
}

// --- invariants ----------------------------------------------------------------------------------

void CRowStore::State::CheckInvariants() const {
    assert(index.GetLength() == places * ULONGLONG{8});                                     // 1
    assert(deleted.GetCount() <= places);                                                   // 2
    assert(stage != Stage::Idle || (!isInValue && next == 0 && end == 0));                  // 3
    assert(next <= end && end <= columns && formSize <= formRoom);                          // 3
    assert(cursorRow == kNoRow || (cursorColumn <= columns && cursorOffset <= cursorSize)); // 4
}
