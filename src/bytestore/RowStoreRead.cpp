// CRowStore: reading and editing.

#include "src/bytestore/RowStoreState.h"

#include <algorithm>
#include <cstring>

using vnbytstr::detail::RowForm;
using vnbytstr::detail::WithMemoryException;

namespace {

constexpr DWORD kPageSize = CBytePage::m_dwPageSize;

} // namespace

// --- reading -------------------------------------------------------------------------------------

CRowValue CRowStore::GetValue(DWORD row, int column) {
    State& state = *m_state;
    if (column < 0 || column >= state.columns)
        State::ThrowOutOfRange();
    if (row != state.cursorRow || state.cursorGeneration != state.allowance.Generation())
        state.LoadRow(row);
    if (column < state.cursorColumn)
        state.cursorColumn = static_cast<int>(state.cursorOffset = 0);
    const BYTE* at = state.cursorBytes + state.cursorOffset;
    for (; state.cursorColumn < column; ++state.cursorColumn)
        at = RowForm::Read(at).second;
    const auto [value, next] = RowForm::Read(at);
    state.cursorColumn = column + 1;
    state.cursorOffset = static_cast<DWORD>(next - state.cursorBytes);
    return value;
}

void CRowStore::State::LoadRow(DWORD row) {
    if (row >= GetRowCount())
        ThrowOutOfRange();
    if (row == cursorRow && isGathered) {
        cursorGeneration = allowance.Generation();
        return;
    }
    const int column = row == cursorRow ? cursorColumn : 0;
    const DWORD offset = row == cursorRow ? cursorOffset : 0;
    ForgetRow();
    ULONGLONG entry;
    const ULONGLONG place = deleted.PlaceOf(row);
    std::memcpy(&entry, index.Piece(place * sizeof entry).data(), sizeof entry);
    cursorPosition = entry & ((ULONGLONG{1} << kPositionBits) - 1);
    cursorSize = static_cast<DWORD>(entry >> kPositionBits);
    if (cursorSize == kLengthBefore)
        CopyAcross(cursorPosition - sizeof cursorSize, reinterpret_cast<BYTE*>(&cursorSize),
                   sizeof cursorSize);
    const std::span<const BYTE> piece = data.Piece(cursorPosition); // each value takes a byte
    isGathered = piece.size() < cursorSize;
    if (isGathered) {
        WithMemoryException([&] { gathered.resize(cursorSize); });
        CopyAcross(cursorPosition, gathered.data(), cursorSize);
    }
    cursorBytes = isGathered ? gathered.data() : piece.data();
    cursorGeneration = allowance.Generation();
    cursorColumn = column;
    cursorOffset = offset;
    cursorRow = row;
}

void CRowStore::State::CopyAcross(ULONGLONG position, BYTE* to, DWORD count) {
    while (count > 0) {
        const std::span<const BYTE> piece = data.Piece(position);
        const auto taken = static_cast<DWORD>(std::min<std::size_t>(piece.size(), count));
        std::memcpy(to, piece.data(), taken);
        position += taken;
        to += taken;
        count -= taken;
    }
}

std::span<const BYTE> CRowStore::GetPiece(const CRowValue& value, DWORD offset) {
    if (offset >= value.m_length)
        return {};
    if (!value.m_isLong)
        return value.GetBytes().subspan(offset);
    const ULONGLONG position = value.m_value + offset;
    if (position >= m_state->values.GetLength())
        State::ThrowOutOfRange(); // the store was emptied meanwhile
    const std::span<const BYTE> piece = m_state->values.Piece(position);
    return piece.first(std::min<std::size_t>(piece.size(), value.m_length - offset));
}

DWORD CRowStore::CopyTo(const CRowValue& value, DWORD offset, BYTE* destination, DWORD count) {
    DWORD copied = 0;
    while (copied < count) {
        const std::span<const BYTE> piece = GetPiece(value, offset + copied);
        if (piece.empty())
            break;
        const auto taken = static_cast<DWORD>(std::min<std::size_t>(piece.size(), count - copied));
        std::memcpy(destination + copied, piece.data(), taken);
        copied += taken;
    }
    return copied;
}

// --- editing -------------------------------------------------------------------------------------

void CRowStore::UpdateValue(DWORD row, int column, const CRowValue& value) {
    BeginUpdate(row, column);
    Append(value);
    EndUpdate();
}

void CRowStore::BeginUpdate(DWORD row, int column) {
    State& state = *m_state;
    if (state.stage == State::Stage::Row || row >= state.GetRowCount() || column < 0 ||
        column >= state.columns)
        State::ThrowOutOfRange();
    CancelRow();
    state.Begin(State::Stage::Update, column, column + 1);
    state.updatedRow = row;
}

void CRowStore::EndUpdate() {
    State& state = *m_state;
    state.Guarded([&] {
        if (state.stage != State::Stage::Update || state.isInValue || state.next != state.end)
            State::ThrowOutOfRange();
        state.PutUpdate();
    });
    state.stage = State::Stage::Idle;
    state.next = state.end = 0;
    state.CheckInvariants();
}

/// Puts the value in the form in place of that of column end - 1.
void CRowStore::State::PutUpdate() {
    cursorRow = updatedRow == cursorRow ? cursorRow : kNoRow;
    LoadRow(updatedRow);
    const BYTE *from = cursorBytes, *to = nullptr, *rowEnd = cursorBytes;
    for (int column = 0; column < columns; ++column) {
        if (column == end - 1)
            from = rowEnd;
        rowEnd = RowForm::Read(rowEnd).second;
        if (column == end - 1)
            to = rowEnd;
    }
    std::vector<BYTE> row;
    WithMemoryException([&] {
        row.reserve(static_cast<std::size_t>(rowEnd - cursorBytes) + formSize);
        row.assign(cursorBytes, from);
        row.insert(row.end(), form.get(), form.get() + formSize);
        row.insert(row.end(), to, rowEnd);
    });
    const ULONGLONG position = cursorPosition;
    const bool fits = row.size() <= cursorSize && position % kPageSize + row.size() <= kPageSize;
    ForgetRow();
    if (fits) {
        data.Overwrite(position, row.data(), static_cast<DWORD>(row.size()));
        return;
    }
    const ULONGLONG before = data.GetLength();
    const ULONGLONG entry = StoreRow(row.data(), row.size());
    try {
        index.Overwrite(deleted.PlaceOf(updatedRow) * ULONGLONG{sizeof entry},
                        reinterpret_cast<const BYTE*>(&entry), sizeof entry);
    } catch (...) {
        data.Rollback(before);
        throw;
    }
}

void CRowStore::DeleteRow(DWORD row) {
    State& state = *m_state;
    if (state.stage != State::Stage::Idle || row >= state.GetRowCount())
        State::ThrowOutOfRange();
    state.deleted.Delete(state.deleted.PlaceOf(row), state.places);
    state.ForgetRow();
    state.CheckInvariants();
}
