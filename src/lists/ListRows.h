// Where the rows of a CListBoxEx come from: the texts of its list box, or a CListRowSource. All
// that differs between the two is here.
#pragma once

#include "src/lists/FilterPlaces.h"
#include "src/lists/ListBoxExInternal.h"
#include "vnbytstr/ListRowSource.h"
#include "vnbytstr/RowFilter.h"

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Unless said otherwise, rows and columns may be any numbers; cells that are not there are empty.
/// A list without columns has the column 0.
class CListBoxEx::Rows {
public:
    using CellUse = std::function<void(int column, std::string_view text)>;
    using TextUse = std::function<void(std::string_view text)>;
    using Time = std::chrono::steady_clock::time_point;

    explicit Rows(CListBoxEx& list) : m_list(list) {}
    virtual ~Rows() = default;
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;

    virtual CListRowSource* Source() const { return nullptr; }
    virtual int Count() const = 0;
    /// A cell's text, in `buffer` or elsewhere; valid until that or the row changes.
    virtual std::string_view Cell(int row, int column, std::string& buffer) const = 0;
    /// Whether a cell that exists, with that text, is null.
    virtual bool IsNull(int row, int column, std::string_view text) const;
    /// All cells of a row, from left to right.
    virtual void ForEachCell(int row, const CellUse& use) const = 0;
    /// The text for DrawColumns: cells joined by the separator, very long ones cut.
    virtual void TextToDraw(int row, std::string& text) const = 0;
    /// The texts by which a column is fitted. Of very many rows only some, and none after `until`
    /// if they have to be asked for.
    virtual void ForEachMeasured(int column, Time until, const TextUse& use) const = 0;

    /// The row and column exist. False when the text was not stored.
    virtual bool SetCell(int row, int column, const char* text) = 0;
    /// Selects the next row that begins with what was typed.
    virtual void FindTyped(const CString& typed) = 0;
    virtual void ContinueSearch() {}
    virtual BOOL Sort(int column) = 0;

    // The filter. Rows are the shown ones, unless they are called unfiltered.
    /// Shows the rows that match, or begins to. No editor is open.
    virtual void ApplyFilter(const CRowFilter& filter) = 0;
    virtual void ContinueFilter() {}
    /// Shows all rows while they are sorted.
    virtual void LiftFilter() {}
    /// All rows have been removed.
    virtual void ForgetFilter() = 0;
    virtual void RowInserted(int) {}
    virtual void RowRemoved(int) {}
    /// All rows have been looked at.
    virtual bool IsFilterDone() const { return true; }
    virtual int UnfilteredCount() const = 0;
    /// -1 when there is no such row.
    virtual int UnfilteredRow(int row) const = 0;
    /// -1 when there is no such row, or it is not shown.
    virtual int FilteredRow(int unfiltered) const = 0;

    // What belongs to a row, which exists.
    virtual BOOL TakesFiles(int row) const = 0;
    virtual void SetTakesFiles(int row, BOOL on) = 0;
    virtual short SubType(int row) const = 0;
    virtual void SetSubType(int row, short type) = 0;
    virtual short DataType(int row) const = 0;
    virtual void SetDataType(int row, short type) = 0;
    virtual LPCTSTR FileName(int row) const = 0;
    virtual void SetFileName(int row, LPCTSTR name) = 0;

protected:
    CListBoxEx& m_list;
};

/// Rows that are texts of the list box; what belongs to them is in the list's arrays.
class CListBoxEx::TextRows : public Rows {
public:
    using Rows::Rows;

    int Count() const override;
    std::string_view Cell(int row, int column, std::string& buffer) const override;
    void ForEachCell(int row, const CellUse& use) const override;
    void TextToDraw(int row, std::string& text) const override;
    void ForEachMeasured(int column, Time until, const TextUse& use) const override;
    bool SetCell(int row, int column, const char* text) override;
    void FindTyped(const CString& typed) override;
    BOOL Sort(int column) override;
    BOOL TakesFiles(int row) const override;
    void SetTakesFiles(int row, BOOL on) override;
    short SubType(int row) const override;
    void SetSubType(int row, short type) override;
    short DataType(int row) const override;
    void SetDataType(int row, short type) override;
    LPCTSTR FileName(int row) const override;
    void SetFileName(int row, LPCTSTR name) override;

    // TextFilter.cpp
    void ApplyFilter(const CRowFilter& filter) override;
    void LiftFilter() override;
    void ForgetFilter() override;
    void RowInserted(int row) override;
    void RowRemoved(int row) override;
    int UnfilteredCount() const override;
    int UnfilteredRow(int row) const override;
    int FilteredRow(int row) const override;

private:
    /// What belongs to the rows put aside, in their order; the list has the same of the others.
    struct AsideData {
        bool IsEmpty() const {
            return dragDrop.IsEmpty() && subTypes.IsEmpty() && dataTypes.IsEmpty() &&
                   fileNames.IsEmpty();
        }
        void Clear() {
            dragDrop.RemoveAll();
            subTypes.RemoveAll();
            dataTypes.RemoveAll();
            fileNames.RemoveAll();
        }

        CByteArray dragDrop;
        CByteArray subTypes;
        CWordArray dataTypes;
        CStringArray fileNames;
    };

    std::string_view Text(int row) const;
    std::size_t Matching(const CRowFilter& filter, std::span<DWORD> rows) const;
    std::string_view CellOf(int row, int column) const;
    std::vector<int> LongestValues(int column, int count) const;
    void ShowOnly(std::span<const DWORD> rows);

    vnbytstr::detail::FilterPlaces m_places; ///< without rows added since the filter was applied
    CRowFilter m_applied;
    AsideData m_aside;
};

/// Rows that a source is asked for. The list box has as many rows, without data, as the source had
/// when the list was last told; if the source has fewer by now, only those are asked for.
class CListBoxEx::SourceRows : public Rows {
public:
    /// So many selected rows are followed through a sort or a filter.
    static constexpr int kMaxFollowed = 1000;

    SourceRows(CListBoxEx& list, CListRowSource& source) : Rows(list), m_source(source) {}

    CListRowSource* Source() const override { return &m_source; }
    int Count() const override;
    std::string_view Cell(int row, int column, std::string& buffer) const override;
    bool IsNull(int row, int column, std::string_view text) const override;
    void ForEachCell(int row, const CellUse& use) const override;
    void TextToDraw(int row, std::string& text) const override;
    void ForEachMeasured(int column, Time until, const TextUse& use) const override;
    bool SetCell(int row, int column, const char* text) override;
    void FindTyped(const CString& typed) override;
    void ContinueSearch() override;
    BOOL Sort(int column) override;
    BOOL TakesFiles(int row) const override { return m_source.TakesFiles(UnfilteredRow(row)); }
    void SetTakesFiles(int, BOOL) override {}
    short SubType(int row) const override { return m_source.GetEditSubType(UnfilteredRow(row)); }
    void SetSubType(int, short) override {}
    short DataType(int row) const override { return m_source.GetEditDataType(UnfilteredRow(row)); }
    void SetDataType(int, short) override {}
    LPCTSTR FileName(int row) const override;
    void SetFileName(int row, LPCTSTR name) override;

    // SourceFilter.cpp
    void ApplyFilter(const CRowFilter& filter) override;
    void ContinueFilter() override;
    void ForgetFilter() override;
    bool IsFilterDone() const override { return !m_filter.isRunning; }
    int UnfilteredCount() const override;
    int UnfilteredRow(int row) const override;
    int FilteredRow(int row) const override;
    /// Whether this object filters, so that it alone sets the number of rows shown.
    bool IsFiltering() const { return m_filter.isOn; }
    /// The source has more or fewer rows.
    void SourceCountChanged();
    /// The source has other rows, or its rows in another order, in which `moved` tells where a row
    /// is now (-1: not known).
    void SourceRowsMoved(const std::function<int(int)>& moved);

private:
    bool Has(int row) const { return row >= 0 && row < Count(); }
    /// The row and column are the source's.
    bool IsSourceNull(int row, int column, std::string_view text) const;
    bool HasColumn(int column) const {
        return m_list.IsColumn(column) || (m_list.m_nColumns == 0 && column == 0);
    }
    int SearchPart();
    SRowSearch FindShown(int first, int end) const;

    /// A search by typing that goes on between messages: from row `from` to the end, then from the
    /// top to it.
    struct Search {
        bool running = false;
        CString text;
        int from = 0;
        int next = 0;
        bool fromTop = false;
        int caret = -1; ///< when it began; the search ends when the user goes elsewhere
    };

    /// A filter, which looks at the rows in parts between messages.
    struct Filter {
        bool isOn = false;
        bool isRunning = false; ///< there are rows to look at
        bool isPosted = false;
        CRowFilter wanted;
        std::vector<DWORD> shown;  ///< the source's rows that match, ascending
        std::vector<DWORD> former; ///< those that matched a wider filter, to be looked at first
        std::size_t nextFormer = 0;
        int next = 0;              ///< the source's next row to look at, after `former`
        std::size_t told = 0;      ///< rows that the list box knows of
        std::vector<int> selected; ///< the source's rows to be selected when they appear
        int caret = -1;            ///< the source's row
    };

    void BeginFilter();
    void RememberSelection();
    bool Matches(int row, std::string& buffer) const;
    void LookAtRows(Time until);
    void ShowFound();
    void SelectAgain(int row);

    CListRowSource& m_source;
    Search m_search;
    Filter m_filter;
    mutable std::string m_fileName; ///< what FileName returned last
};
