// Rows inserted, duplicated and deleted, taken back and written; SQLite's C API says what came of it.
#include "examples/vnquery/document/ResultDocument.h"
#include "examples/vnquery/files/FileExport.h"
#include "examples/vnquery/tasks/Failure.h"

#include "tests/vnquery/EditTest.h"
#include "tests/vnquery/sources/RowCollector.h"

#include <fstream>
#include <numeric>
#include <random>
#include <sqlite3.h>

namespace vnquery {
namespace {

class ResultDocumentTest : public test::EditTest {
protected:
    void Open(const std::string& sql) {
        const auto source = OpenSource(m_connection, sql, SourceUse::Editing);
        ResultShape shape{ResultSet(*source), source->GetKinds(), source->GetEditPlan()};
        shape.result.Fetch(*source, m_progress);
        m_document.Begin(std::move(shape), sql, m_connection);
        m_document.GetFormat().defaultText = "*";
        m_document.ShowNewRows();
        m_document.LearnKinds();
    }
    /// The cells as they are shown, "x" before rows that are to be deleted and "+" before new ones.
    std::string Shown() const {
        std::string text;
        for (std::size_t row = 0; row < m_document.GetShownRows(); ++row) {
            text += (row ? " " : "") + std::string(m_document.IsNew(row)       ? "+"
                                                   : m_document.IsDeleted(row) ? "x"
                                                                               : "");
            for (std::size_t i = 0; i < m_document.GetResult().GetColumnCount(); ++i)
                text += (i ? "," : "") + m_document.GetCellText(row, i);
        }
        return text;
    }
    void Edit(std::size_t shownRow, std::size_t column, std::string_view text) {
        m_document.GetEdits().Set(m_document.PlaceOf(shownRow, column),
                                  {false, test::MakeValue(Value::Type::Text, text)},
                                  m_document.GetResult());
    }
    WriteReport WriteAll() {
        const auto writer = OpenWriter(m_connection, m_document.GetPlan());
        WriteReport report = WriteEdits(*writer, m_document.GetPlan(), m_document.GetResult(),
                                        m_document.GetEdits(), m_progress);
        writer->Commit();
        return report;
    }
    std::string Table(const std::string& sql) const {
        sqlite3* database = nullptr;
        sqlite3_open(Database().c_str(), &database);
        std::string text;
        const auto add = [](void* to, int count, char** values, char**) {
            auto& all = *static_cast<std::string*>(to);
            all += all.empty() ? "" : " ";
            for (int i = 0; i < count; ++i)
                all += std::string(i ? "," : "") + (values[i] ? values[i] : "-");
            return 0;
        };
        sqlite3_exec(database, sql.c_str(), add, &text, nullptr);
        sqlite3_close(database);
        return text;
    }
    ResultDocument m_document;
};

constexpr char kTable[] = "create table t(id integer primary key, v text not null default 'd', n, "
                          "twice as (n * 2), b blob);"
                          "insert into t(v, n) values ('a', 1), ('b', 2), ('c', 3)";

TEST_F(ResultDocumentTest, RowsAreWrittenAndReadBack) {
    MakeDatabase(kTable);
    Open("select id, v, n, twice from t");
    EXPECT_EQ(m_document.GetInsertReason(), ReadOnlyReason::None);
    EXPECT_EQ(m_document.InsertRow(1), 1u);
    EXPECT_EQ(Shown(), "1,a,1,2 +*,*,*,* 2,b,2,4 3,c,3,6");
    Edit(1, 2, "7");
    EXPECT_EQ(m_document.GetReadOnlyReason(m_document.PlaceOf(1, 0)), ReadOnlyReason::None);
    EXPECT_EQ(m_document.GetReadOnlyReason(m_document.PlaceOf(1, 3)), ReadOnlyReason::Computed);
    EXPECT_EQ(m_document.DuplicateRow(3), 4u);
    Edit(4, 1, "copy");
    EXPECT_EQ(m_document.InsertRow(99), 5u); // nothing but defaults
    EXPECT_EQ(m_document.DeleteRows(std::vector<std::size_t>{0, 3}), 2u);
    EXPECT_EQ(Shown(), "x1,a,1,2 +*,*,7,* 2,b,2,4 x3,c,3,6 +*,copy,3,* +*,*,*,*");
    EXPECT_EQ(m_document.GetReadOnlyReason(m_document.PlaceOf(0, 1)), ReadOnlyReason::Deleted);
    EXPECT_EQ(m_document.GetEdits().GetCount(), 5u);

    m_document.Accept(WriteAll());
    EXPECT_EQ(Shown(), "3,d,7,14 2,b,2,4 4,copy,3,6 5,d,-,-");
    EXPECT_EQ(Table("select id, v, n from t"), "2,b,2 3,d,7 4,copy,3 5,d,-");
    EXPECT_TRUE(m_document.GetEdits().IsEmpty());
    EXPECT_FALSE(m_document.CanUndo());
    // Like any other row from now on, whatever the order.
    ASSERT_TRUE(m_document.BeginSort(0, true));
    while (m_document.GetSort()->GetState() == TaskState::Running)
        continue;
    ASSERT_TRUE(m_document.EndSort());
    EXPECT_EQ(Shown(), "5,d,-,- 4,copy,3,6 3,d,7,14 2,b,2,4");
    EXPECT_EQ(m_document.GetSortedRow(0), 2u);
    Edit(1, 1, "again");
    EXPECT_EQ(m_document.DeleteRows(std::vector<std::size_t>{2}), 1u);
    m_document.Accept(WriteAll());
    EXPECT_EQ(Table("select id, v from t"), "2,b 4,again 5,d");
    EXPECT_EQ(Shown(), "5,d,-,- 4,again,3,6 2,b,2,4");
}

/// Against a copy of all that is seen after each step.
TEST_F(ResultDocumentTest, EachStepIsTakenBack) {
    MakeDatabase(kTable);
    Open("select id, v, n from t");
    std::vector<std::string> seen{Shown()};
    std::mt19937 random(7);
    const auto pick = [&](std::size_t count) { return random() % std::max<std::size_t>(count, 1); };
    for (int i = 0; i < 400; ++i) {
        const std::size_t rows = m_document.GetShownRows();
        const std::size_t steps = seen.size();
        switch (pick(6)) {
        case 0:
            m_document.InsertRow(pick(rows + 1));
            break;
        case 1:
            if (rows > 0)
                m_document.DuplicateRow(pick(rows));
            break;
        case 2:
            if (rows > 0)
                m_document.DeleteRows(std::vector<std::size_t>{pick(rows), pick(rows)});
            break;
        case 3:
            if (m_document.CanUndo()) {
                m_document.Undo();
                seen.pop_back();
                ASSERT_EQ(Shown(), seen.back());
            }
            break;
        default:
            if (rows > 0)
                Edit(pick(rows), 1 + pick(2), std::to_string(i));
        }
        if (seen.size() == steps && Shown() != seen.back())
            seen.push_back(Shown());
        ASSERT_EQ(m_document.CanUndo(), seen.size() > 1);
    }
    while (m_document.CanUndo()) {
        m_document.Undo();
        seen.pop_back();
        ASSERT_EQ(Shown(), seen.back());
    }
    EXPECT_EQ(Shown(), "1,a,1 2,b,2 3,c,3");
    EXPECT_TRUE(m_document.GetEdits().IsEmpty());
    m_document.InsertRow(0);
    m_document.DeleteRows(std::vector<std::size_t>{1});
    m_document.Discard();
    EXPECT_EQ(Shown(), "1,a,1 2,b,2 3,c,3");
}

TEST_F(ResultDocumentTest, ChangedRowsAreNotDeletedUnseen) {
    MakeDatabase(kTable);
    Open("select id, n, v from t");
    m_document.DeleteRows(std::vector<std::size_t>{0, 1, 2});
    MakeDatabase("update t set v = 'theirs' where id = 2; delete from t where id = 3");
    WriteReport report = WriteAll();
    EXPECT_EQ(report.deleted, (std::vector<std::size_t>{0, 2}));
    ASSERT_EQ(report.conflicts.size(), 1u);
    EXPECT_EQ(report.conflicts[0].now.GetBytes(), "theirs");
    m_document.Accept(std::move(report));
    EXPECT_EQ(Shown(), "x2,2,theirs");
    EXPECT_EQ(Table("select id from t"), "2");
    m_document.Accept(WriteAll()); // seen, and wanted all the same
    EXPECT_EQ(Shown(), "");
    EXPECT_EQ(Table("select count(*) from t"), "0");
    EXPECT_FALSE(m_document.BeginSort(0, false));
    m_document.InsertRow(0);
    EXPECT_EQ(Shown(), "+*,*,*");
}

TEST_F(ResultDocumentTest, ARefusedRowUndoesAll) {
    MakeDatabase(std::string(kTable) + "; create table k(a text, b, primary key (a)) without rowid;"
                                       "create view w as select * from t");
    Open("select id, v, n from t");
    m_document.DeleteRows(std::vector<std::size_t>{1});
    m_document.InsertRow(0);
    m_document.GetEdits().Set(m_document.PlaceOf(0, 1), NewValue(), m_document.GetResult());
    EXPECT_THROW(WriteAll(), Failure); // not null
    EXPECT_EQ(Table("select id from t"), "1 2 3");
    EXPECT_EQ(m_document.GetEdits().GetCount(), 2u);

    Open("select a, b from k");
    m_document.InsertRow(0);
    Edit(0, 0, "key");
    m_document.Accept(WriteAll());
    EXPECT_EQ(Shown(), "key,-");
    Edit(0, 1, "value");
    m_document.Accept(WriteAll());
    EXPECT_EQ(Table("select * from k"), "key,value");
    Open("select b from k"); // written, but its row cannot be found again
    EXPECT_EQ(m_document.GetInsertReason(), ReadOnlyReason::None);
    for (const char* sql : {"select * from w", "select a.id, b.v from t a, t b", "select 1"}) {
        Open(sql);
        EXPECT_NE(m_document.GetInsertReason(), ReadOnlyReason::None) << sql;
    }
}

TEST_F(ResultDocumentTest, LongBytesOfNewRows) {
    MakeDatabase(kTable);
    const std::string bytes = test::SomeBytes(3000000, 3);
    Open("select b, v, id from t");
    m_document.InsertRow(3);
    m_document.GetEdits().Set(m_document.PlaceOf(3, 0),
                              {false, test::MakeValue(Value::Type::Binary, bytes)},
                              m_document.GetResult());
    m_document.Accept(WriteAll());
    EXPECT_TRUE(m_document.GetValue({3, 0}).GetBytes() == bytes);
    m_document.DuplicateRow(3);
    m_document.DeleteRows(std::vector<std::size_t>{3});
    m_document.Accept(WriteAll());
    EXPECT_EQ(Table("select id, length(b) from t where b is not null"), "4,3000000");
    EXPECT_TRUE(m_document.GetValue(m_document.PlaceOf(3, 0)).GetBytes() == bytes);
}

TEST_F(ResultDocumentTest, WhatIsSeenIsPassedOn) {
    MakeDatabase(kTable);
    Open("select id, v, n from t");
    Edit(1, 1, "new");
    m_document.InsertRow(0);
    Edit(0, 2, "9");
    m_document.DeleteRows(std::vector<std::size_t>{3});
    const auto write = [&](Format kind, std::vector<std::size_t> rows,
                           std::vector<std::size_t> columns) {
        ExportFormat format;
        format.format = kind;
        std::vector<std::string> names;
        for (const std::size_t column : columns)
            names.push_back(m_document.GetHeading(column));
        FileExport target(File("out"), format, names, &m_progress);
        m_document.PassShownTo(target.GetWriter(), rows, columns, m_progress);
        target.Commit();
        std::ifstream file(File("out"));
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    EXPECT_EQ(write(Format::Csv, {0, 1, 2}, {1, 0, 2}), "v,id,n\n,,9\na,1,1\nnew,2,2\n");
    EXPECT_EQ(write(Format::JsonLines, {2, 3}, {1, 0}),
              "{\"v\":\"new\",\"id\":2}\n{\"v\":\"c\",\"id\":3}\n");
}

TEST_F(ResultDocumentTest, SummariesAreExact) {
    MakeDatabase("create table t(id integer primary key, v); insert into t(v) values (0.1), (0.2), "
                 "(9223372036854775807), (9223372036854775807), (-1e-3), (null), ('text')");
    Open("select v, id from t");
    const auto summarise = [&](std::size_t column) {
        std::vector<std::size_t> rows(m_document.GetShownRows());
        std::iota(rows.begin(), rows.end(), std::size_t{0});
        return m_document.PrepareSummary(rows, column)(m_progress);
    };
    ColumnSummary summary = summarise(0);
    EXPECT_EQ(summary.rows, 7u);
    EXPECT_EQ(summary.nulls, 1u);
    EXPECT_EQ(summary.numbers, 5u);
    EXPECT_EQ(summary.sum, "18446744073709551614.299");
    EXPECT_EQ(summary.minimum->GetBytes(), "-0.001");
    EXPECT_EQ(summary.maximum->GetBytes(), "text");
    m_document.DeleteRows(std::vector<std::size_t>{0, 6});
    m_document.GetEdits().Set({2, 0}, {false, test::MakeValue(Value::Type::Number, "-1000")},
                              m_document.GetResult());
    summary = summarise(0);
    EXPECT_EQ(summary.rows, 5u);
    EXPECT_EQ(summary.sum, "9223372036854774807.199");
    EXPECT_EQ(summary.minimum->GetBytes(), "-1000");
}

/// Sums of 64-bit integers as 128-bit ones have them; and of fractions as integers.
TEST(ExactSum, AgreesWithIntegers) {
    std::mt19937_64 random(3);
    ExactSum whole;
    ExactSum fractions;
    long long sum = 0;
    for (int i = 0; i < 5000; ++i) {
        const auto number = static_cast<long long>(random()) / (1LL << (14 + random() % 40));
        sum += number;
        ASSERT_TRUE(whole.Add(std::to_string(number)));
        ASSERT_TRUE(fractions.Add(std::to_string(number) + "e-7"));
        ASSERT_EQ(whole.Get(), std::to_string(sum));
    }
    std::string digits = std::to_string(sum < 0 ? -sum : sum);
    digits.insert(0, 8 - std::min<std::size_t>(digits.size(), 8), '0');
    digits.insert(digits.size() - 7, ".");
    digits.erase(digits.find_last_not_of('0') + 1);
    EXPECT_EQ(fractions.Get(), (sum < 0 ? "-" : "") + digits);
    ExactSum other;
    for (const char* text : {"", "-", ".", "NaN", "inf", "1e", "1e99999", "1 ", "0x1", "1.2.3"})
        EXPECT_FALSE(other.Add(text)) << text;
    EXPECT_EQ(other.Get(), "0");
    EXPECT_TRUE(other.Add("1e300") && other.Add(".5") && other.Add("-1E+300") &&
                other.Add("-0.50"));
    EXPECT_EQ(other.Get(), "0");
    EXPECT_TRUE(other.Add("-1e-20"));
    EXPECT_EQ(other.Get(), "-0.00000000000000000001");
}

} // namespace
} // namespace vnquery
