// What the sources of CRowStore share: its data.
#pragma once

#include "src/bytestore/DeletedRows.h"
#include "src/bytestore/PagedSpace.h"
#include "src/bytestore/RowForm.h"
#include "vnbytstr/RowStore.h"

#include <memory>
#include <vector>

/// See RowStore.cpp for the invariants.
struct CRowStore::State {
    static constexpr DWORD kNoRow = 0xFFFFFFFF;
    static constexpr DWORD kTails =
        4; ///< pages of the cache that are being filled, and a spare one
    /// Values up to this length may lie in their row, and rows up to this length lie in one page.
    static constexpr DWORD kTogether = 4096;
    /// A value of so few bytes takes no more room in its row than where it lies would take.
    static constexpr DWORD kAlwaysInRow = 16;
    /// Entries of the index: where a row lies, and above that its length, if that is less.
    static constexpr int kPositionBits = 48;
    static constexpr DWORD kLengthBefore = 0xFFFF; ///< the length is in 4 bytes before the row

    enum class Stage : unsigned char { Idle, Row, Update };

    State(int columnCount, DWORD pages, DWORD segmentBytes)
        : columns(columnCount), allowance(pages), data(allowance, segmentBytes),
          index(allowance, segmentBytes), values(allowance, segmentBytes) {}

    [[noreturn]] static void ThrowOutOfRange() {
        throw new CCacheException(CCacheException::kOutOfRange);
    }
    DWORD GetRowCount() const { return places - deleted.GetCount(); }
    void CheckInvariants() const;

    // --- making a row ----------------------------------------------------------------------------
    void Begin(Stage newStage, int first, int end);
    void Cancel() noexcept;
    /// What an operation on the row that is being made throws gives that row up.
    template <class Action>
    void Guarded(Action action) {
        try {
            action();
        } catch (...) {
            Cancel();
            throw;
        }
    }
    /// Room for the next value's form; CCacheException(0) when there is to be none.
    BYTE* NextValue(std::size_t room) {
        if (next >= end || isInValue) [[unlikely]]
            ThrowOutOfRange();
        if (formRoom - formSize < room) [[unlikely]]
            GrowForm(room);
        return form.get() + formSize;
    }
    void EndValueAt(const BYTE* at) {
        formSize = static_cast<std::size_t>(at - form.get());
        ++next;
    }
    void GrowForm(std::size_t room);
    void PutApart(const CRowValue& value, const BYTE* bytes);
    void PutLying(const CRowValue& value, const BYTE* bytes);
    ULONGLONG StoreRow(const BYTE* bytes, std::size_t size);
    void AppendRow();

    // --- reading ---------------------------------------------------------------------------------
    void LoadRow(DWORD row);
    void CopyAcross(ULONGLONG position, BYTE* to, DWORD count);
    void ForgetRow() noexcept { cursorRow = kNoRow; }

    // --- editing ---------------------------------------------------------------------------------
    void PutUpdate();

    const int columns;
    vnbytstr::detail::PageAllowance allowance;
    vnbytstr::detail::PagedSpace data, index, values;
    DWORD places = 0; ///< rows with those deleted
    vnbytstr::detail::DeletedRows deleted;

    // The row that is being made, or the one value of an update.
    Stage stage = Stage::Idle;
    bool isInValue = false; ///< between BeginValue and EndValue
    int next = 0, end = 0;  ///< columns
    std::unique_ptr<BYTE[]> form;
    std::size_t formSize = 0, formRoom = 0;
    ULONGLONG valuesBefore = 0; ///< length of `values` when it was begun
    DWORD updatedRow = 0;

    // The value that is being put together from pieces.
    ERowValueType valueType = rowNull;
    WORD valueCcsid = 0;
    bool isValueLong = false;
    std::vector<BYTE> pieces; ///< while it is not long
    ULONGLONG valueBegin = 0, valueLength = 0;

    // The row read last.
    DWORD cursorRow = kNoRow;
    ULONGLONG cursorGeneration = 0;
    ULONGLONG cursorPosition = 0;
    DWORD cursorSize = 0;
    const BYTE* cursorBytes = nullptr;
    int cursorColumn = 0; ///< the column at cursorOffset
    DWORD cursorOffset = 0;
    bool isGathered = false; ///< cursorBytes is `gathered`
    std::vector<BYTE> gathered;
};
