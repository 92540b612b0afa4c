// The rows of a list box against a plain model of them.
#include "src/window/controls/ListBoxRows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <string>
#include <vector>

using vnbytstr::detail::ListBoxRows;

namespace {

struct ModelRow {
    std::string text;
    std::uintptr_t data = 0;
    bool selected = false;
    int height = 0;
};

/// The same operations on a vector.
class Model {
public:
    std::vector<ModelRow> rows;

    int RowAt(std::int64_t y) const {
        if (y < 0)
            return -1;
        int row = 0;
        for (; row < static_cast<int>(rows.size()); ++row) {
            if (y < rows[static_cast<std::size_t>(row)].height)
                return row;
            y -= rows[static_cast<std::size_t>(row)].height;
        }
        return row;
    }
    std::int64_t TopOf(int row) const {
        return std::accumulate(rows.begin(), rows.begin() + row, std::int64_t{0},
                               [](std::int64_t sum, const ModelRow& r) { return sum + r.height; });
    }
};

void ExpectSame(const ListBoxRows& rows, const Model& model) {
    ASSERT_EQ(static_cast<std::size_t>(rows.Count()), model.rows.size());
    int selected = 0;
    for (int i = 0; i < rows.Count(); ++i) {
        const ModelRow& expected = model.rows[static_cast<std::size_t>(i)];
        ASSERT_EQ(rows.Text(i), expected.text) << i;
        ASSERT_EQ(rows.Text(i).data()[expected.text.size()], '\0');
        ASSERT_EQ(rows.Data(i), expected.data) << i;
        ASSERT_EQ(rows.IsSelected(i), expected.selected) << i;
        ASSERT_EQ(rows.HeightOf(i), expected.height) << i;
        selected += expected.selected ? 1 : 0;
    }
    ASSERT_EQ(rows.SelectedCount(), selected);
}

class RandomOperations {
public:
    explicit RandomOperations(unsigned seed) : m_random(seed) {}

    void Step(ListBoxRows& rows, Model& model) {
        const int count = rows.Count();
        const int row = count > 0 ? Below(count) : 0;
        switch (Below(12)) {
        case 0:
        case 1:
        case 2: {
            const std::string text = Text();
            const int at = Below(count + 1);
            const std::uintptr_t data = Below(4) == 0 ? 77 : 0;
            rows.Insert(at, text, data);
            model.rows.insert(model.rows.begin() + at, {text, data, false, rows.Height()});
            break;
        }
        case 3: {
            const std::vector<std::string> texts{Text(), "", Text()};
            std::string block;
            for (const std::string& text : texts) {
                block += text + '\0';
                model.rows.push_back({text, 0, false, rows.Height()});
            }
            ASSERT_TRUE(rows.AddMany(block, 3));
            break;
        }
        case 4: {
            std::vector<DWORD> order(static_cast<std::size_t>(count));
            std::iota(order.begin(), order.end(), 0U);
            std::shuffle(order.begin(), order.end(), m_random);
            ASSERT_TRUE(rows.Reorder(order));
            const std::vector<ModelRow> before = model.rows;
            for (std::size_t i = 0; i < before.size(); ++i)
                model.rows[i] = before[order[i]];
            break;
        }
        default:
            if (count > 0)
                StepOnRow(rows, model, row);
        }
    }

private:
    void StepOnRow(ListBoxRows& rows, Model& model, int row) {
        ModelRow& expected = model.rows[static_cast<std::size_t>(row)];
        switch (Below(5)) {
        case 0:
            rows.Remove(row);
            model.rows.erase(model.rows.begin() + row);
            if (model.rows.empty())
                break;
            return;
        case 1:
            expected.text = Text();
            rows.SetText(row, expected.text);
            break;
        case 2:
            expected.selected = !expected.selected;
            ASSERT_TRUE(rows.Select(row, expected.selected));
            break;
        case 3:
            expected.height = 1 + Below(40);
            rows.SetHeightOf(row, expected.height);
            break;
        default:
            expected.data = static_cast<std::uintptr_t>(Below(3));
            rows.SetData(row, expected.data);
        }
        const int y = Below(2000) - 10;
        ASSERT_EQ(rows.RowAt(y), model.RowAt(y)) << y;
        ASSERT_EQ(rows.TopOf(row), model.TopOf(row)) << row;
    }
    int Below(int limit) { return std::uniform_int_distribution<>(0, limit - 1)(m_random); }
    std::string Text() {
        const int length = Below(50) == 0 ? 300000 : Below(30);
        return std::string(static_cast<std::size_t>(length), static_cast<char>('a' + Below(26)));
    }

    std::mt19937 m_random;
};

} // namespace

TEST(ListBoxRows, FollowsAPlainModel) {
    for (unsigned seed = 1; seed <= 4; ++seed) {
        ListBoxRows rows;
        Model model;
        RandomOperations operations(seed);
        for (int step = 0; step < 1500; ++step) {
            operations.Step(rows, model);
            if (step % 100 == 0)
                ExpectSame(rows, model);
        }
        ExpectSame(rows, model);
    }
}

TEST(ListBoxRows, RefusesWhatIsNoPermutation) {
    ListBoxRows rows;
    for (const char* text : {"a", "b", "c"})
        rows.Add(text);
    EXPECT_FALSE(rows.Reorder(std::vector<DWORD>{0, 1}));
    EXPECT_FALSE(rows.Reorder(std::vector<DWORD>{0, 1, 1}));
    EXPECT_FALSE(rows.Reorder(std::vector<DWORD>{0, 1, 3}));
    EXPECT_EQ(rows.Text(2), "c");
    EXPECT_FALSE(rows.AddMany(std::string_view("x\0y", 3), 2));
    EXPECT_EQ(rows.Count(), 3);
}

TEST(ListBoxRows, FindsBeginningsInBothCasesAndRoundTheEnd) {
    ListBoxRows rows;
    for (const char* text : {"Alpha", "beta", "ALPINE", "\xC3\x84pfel", "alp", ""})
        rows.Add(text);
    EXPECT_EQ(rows.FindBeginning(-1, "alp"), 0);
    EXPECT_EQ(rows.FindBeginning(0, "aLP"), 2);
    EXPECT_EQ(rows.FindBeginning(4, "alph"), 0);
    EXPECT_EQ(rows.FindBeginning(5, "b"), 1);
    EXPECT_EQ(rows.FindBeginning(-1, "\xC3\xA4P"), 3);
    EXPECT_EQ(rows.FindExact(-1, "ALP"), 4);
    EXPECT_EQ(rows.FindExact(-1, ""), 5);
    EXPECT_EQ(rows.FindBeginning(-1, "alpinex"), -1);
    EXPECT_EQ(rows.FindBeginning(3, "beta"), 1);
}

TEST(ListBoxRows, CostsItsTextAndAFewBytesMore) {
    ListBoxRows rows;
    constexpr int kRows = 200000;
    std::size_t bytes = 0;
    for (int i = 0; i < kRows; ++i) {
        const std::string text = "row number " + std::to_string(i);
        bytes += text.size();
        rows.Add(text);
    }
    EXPECT_LE(rows.MemoryUse(), bytes + kRows * 32ULL + (2U << 20));
    // Replacing every text over and over does not pile up what is gone.
    for (int round = 0; round < 10; ++round)
        for (int i = 0; i < kRows; ++i)
            rows.SetText(i, std::string(20 + static_cast<std::size_t>(round), 'x'));
    EXPECT_LE(rows.MemoryUse(), kRows * 30ULL * 3);
    EXPECT_EQ(rows.Text(kRows - 1), std::string(29, 'x'));
}
