#include "examples/vnquery/files/History.h"
#include "examples/vnquery/tasks/Failure.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>

namespace vnquery {
namespace {

class HistoryTest : public testing::Test {
protected:
    std::string File() const { return m_folder.File("below/history.sqlite"); }
    static HistoryEntry Entry(const std::string& sql) {
        return {sql, "shop.db", 1700000000, 12, 3, ""};
    }
    std::string Content() const { return m_folder.Read("below/history.sqlite"); }

    vnbytstr::test::TemporaryFolder m_folder;
};

TEST_F(HistoryTest, TheLatestAreKeptForTheirOwnerAlone) {
    const History history(File());
    EXPECT_TRUE(history.GetAll().empty());
    for (int i = 0; i < 3; ++i)
        history.Add(Entry("select " + std::to_string(i)));
    history.Add({"select x", "shop.db", 1700000001, 5, -1, "no such column: x"});
    const std::vector<HistoryEntry> all = history.GetAll();
    ASSERT_EQ(all.size(), 4u);
    EXPECT_EQ(all[0].error, "no such column: x");
    EXPECT_EQ(all[0].rows, -1);
    EXPECT_EQ(all[0].when, 1700000001);
    EXPECT_EQ(all[1].sql, "select 2");
    EXPECT_EQ(all.back().sql, "select 0");
    EXPECT_EQ(vnbytstr::test::TemporaryFolder::ModeOf(File()), 0600U);
    history.Clear();
    EXPECT_TRUE(history.GetAll().empty());
    EXPECT_EQ(Content().find("select 2"), std::string::npos);
    History("/dev/null").Add(Entry("select 1"));
    EXPECT_THROW(History("/dev/null/x").Add(Entry("select 1")), Failure);
}

TEST_F(HistoryTest, ProcessesAddAtOnceAndTheOldestGo) {
    constexpr int kCount = 50;
    const auto add = [this] {
        return vnbytstr::test::InChild([this] {
            try {
                for (int i = 0; i < 40; ++i)
                    History(File(), kCount).Add(Entry("select " + std::to_string(i)));
            } catch (...) {
                return 1;
            }
            return 0;
        });
    };
    std::future<int> other = std::async(std::launch::async, add);
    EXPECT_EQ(add(), 0);
    EXPECT_EQ(other.get(), 0);
    const std::vector<HistoryEntry> all = History(File()).GetAll();
    ASSERT_EQ(all.size(), std::size_t{kCount});
    EXPECT_EQ(std::ranges::count(all, "select 39", &HistoryEntry::sql), 2);
}

TEST_F(HistoryTest, DamagedFilesAreSetAside) {
    const History history(File());
    for (const std::size_t place : {0u, 4096u}) { // in the second case with a sound header
        history.Add(Entry("select " + std::string(20000, 'x')));
        std::string content = Content();
        ASSERT_GT(content.size(), place + 8192);
        content.replace(place, 8192, std::string(8192, '?'));
        m_folder.Write("below/history.sqlite", content);
        EXPECT_TRUE(history.GetAll().empty());
        history.Add(Entry("select 2"));
        EXPECT_EQ(history.GetAll().size(), 1u);
    }
    EXPECT_EQ(m_folder.Read("below/history.sqlite.damaged-1").substr(0, 4), "????");
    EXPECT_EQ(m_folder.Read("below/history.sqlite.damaged-2").substr(0, 6), "SQLite");
    m_folder.Write("below/history.sqlite", ""); // as after a full disk
    history.Add(Entry("select 3"));
    EXPECT_EQ(history.GetAll().size(), 1u);
}

TEST_F(HistoryTest, SecretsAreLeftOut) {
    for (const char* sql :
         {"alter user me password 'x'", "ALTER USER me IDENTIFIED BY tiger",
          "set Password for me = password(:p)", "select crypt($$pw$$, salt)",
          "select * from users where api_token = 'x'", "create server s options (passwd 'y')",
          "select dblink('host=a pwd=b', 'x')", "select 1 -- the password is x", "pragma key = 1",
          "pragma rekey=\"x\"", "select 1 # secret", "attach 'a' as b key 'x'",
          "select load('ftp://me:x@host/')", "select pass from t /* x"})
        EXPECT_TRUE(MayHoldSecret(sql)) << sql;
    for (const char* sql : {"select password from users", "select * from tokens limit 10", "",
                            "select 'x' from t", "update t set a = 'b'", "pragma page_size"})
        EXPECT_FALSE(MayHoldSecret(sql)) << sql;
    const History history(File());
    history.Add(Entry("alter user me password 'tiger'"));
    history.Add(Entry(std::string(History::kLongest + 1, ' ')));
    EXPECT_TRUE(history.GetAll().empty());
    EXPECT_EQ(Content().find("tiger"), std::string::npos);
}

} // namespace
} // namespace vnquery
