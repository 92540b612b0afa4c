// The result's rows for the list.
#pragma once

#include "vnquery/document/ResultDocument.h"

#include "vnbytstr/ListRowSource.h"

#include <functional>

namespace vnquery {

/// Column 0 is that of the rows' numbers; the result's columns follow it.
class ResultRows : public CListRowSource {
public:
    /// `sorts` is called when rows were sorted, or when that takes long and goes on in the
    /// background.
    ResultRows(ResultDocument& document, std::function<void()> sorts)
        : m_document(document), m_sorts(std::move(sorts)) {}

    int GetRowCount() override { return static_cast<int>(m_document.GetShownRows()); }
    void GetCell(int row, int column, std::string& text) override;
    ENullAnswer IsNull(int row, int column) override;
    /// The view has stored the value when it was asked.
    bool SetCell(int, int, std::string_view) override { return true; }
    ESortAnswer SortRows(int column, bool ascending) override;
    int GetSortedRow(int before) override;
    bool TakesFiles(int) override { return true; }
    bool GetFileName(int row, std::string& name) override;
    void SetFileName(int row, std::string_view name) override;

private:
    ResultDocument& m_document;
    std::function<void()> m_sorts;
    int m_fileRow = -1; ///< on which a file was dropped
    std::string m_fileName;
};

} // namespace vnquery
