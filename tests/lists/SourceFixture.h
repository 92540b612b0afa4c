// A list whose rows a source supplies.
#pragma once

#include "tests/lists/ListFixture.h"

#include "vnbytstr/ListRowSource.h"

#include <QImage>

#include <algorithm>
#include <numeric>
#include <set>

namespace vnbytstr::test {

/// The fixture's five rows, or any number of rows made up; records what it is asked for.
class TestSource : public CListRowSource {
public:
    TestSource() = default;
    explicit TestSource(int madeUp) : count(madeUp) {}

    int GetRowCount() override { return count >= 0 ? count : static_cast<int>(rows.size()); }
    void GetCell(int row, int column, std::string& text) override {
        EXPECT_TRUE(text.empty());
        ASSERT_TRUE(row >= 0 && row < GetRowCount()) << row;
        ++asked;
        askedRows.insert(row);
        askedColumns.insert(column);
        if (count < 0)
            text = rows[Index(row)][Index(column)];
        else
            text = std::to_string(row) + "." + std::to_string(column);
        if (onGet)
            onGet();
    }
    bool SetCell(int row, int column, std::string_view text) override {
        stored.push_back(std::to_string(row) + "," + std::to_string(column) + ":" +
                         std::string(text));
        if (onSet && !onSet())
            return false;
        rows[Index(row)][Index(column)] = text;
        return true;
    }
    ENullAnswer IsNull(int row, int column) override {
        return isNull ? isNull(row, column) : ENullAnswer::ByMarker;
    }
    ESortAnswer SortRows(int column, bool ascending) override {
        sorts.push_back((ascending ? "up " : "down ") + std::to_string(column));
        if (sortAnswer == ESortAnswer::Sorted)
            SortNow(column, ascending);
        return sortAnswer;
    }
    void SortNow(int column, bool ascending) {
        order.resize(rows.size());
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
            return rows[Index(ascending ? a : b)][Index(column)] <
                   rows[Index(ascending ? b : a)][Index(column)];
        });
        auto sorted = rows;
        for (std::size_t i = 0; i < rows.size(); ++i)
            sorted[i] = rows[Index(order[i])];
        rows.swap(sorted);
    }
    int GetSortedRow(int before) override {
        const auto found = std::find(order.begin(), order.end(), before);
        return found != order.end() ? static_cast<int>(found - order.begin()) : -1;
    }
    bool TakesFiles(int row) override { return row == 1; }
    short GetEditSubType(int row) override { return row == 1 ? kEditorFile : 1; }
    short GetEditDataType(int row) override { return row == 2 ? kDataBlob : 0; }
    bool GetFileName(int row, std::string& name) override {
        name = row == 1 ? fileName : "";
        return row == 1;
    }
    void SetFileName(int, std::string_view name) override { fileName = name; }

    /// Forgets what was asked.
    void Reset() {
        asked = 0;
        askedRows.clear();
        askedColumns.clear();
    }
    static std::size_t Index(int at) { return static_cast<std::size_t>(at); }

    std::vector<std::vector<std::string>> rows;
    int count = -1;
    int asked = 0;
    std::set<int> askedRows;
    std::set<int> askedColumns;
    std::vector<std::string> stored;
    std::vector<std::string> sorts;
    std::vector<int> order;
    std::string fileName = "/tmp/of-row-1";
    ESortAnswer sortAnswer = ESortAnswer::Sorted;
    std::function<void()> onGet;
    std::function<ENullAnswer(int, int)> isNull;
    std::function<bool()> onSet;
};

class RowSource : public ListFixture {
protected:
    void SetUp() override {
        ListFixture::SetUp();
        for (const auto& row : kRows)
            source.rows.push_back({row[0], row[1], row[2]});
    }
    QImage Draw() {
        Pump();
        return parent.GetWidget()->grab().toImage();
    }
    int Top() { return static_cast<int>(list->SendMessage(LB_GETTOPINDEX)); }
    int Visible() {
        CRect client;
        list->GetClientRect(client);
        return (client.Height() + RowHeight() - 1) / RowHeight();
    }
    std::string Selection() { return std::string(list->GetSelectionText(FALSE)); }

    TestSource source; ///< of the fixture's rows
};

inline constexpr DWORD kSelections[] = {0, LBS_MULTIPLESEL, LBS_EXTENDEDSEL};
inline constexpr int kMany = 10'000'000;

} // namespace vnbytstr::test
