#include "examples/vnquery/window/CatalogTree.h"
#include "examples/vnquery/window/HistoryPane.h"

#include "tests/support/TemporaryFolder.h"

#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>
#include <QTreeView>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sqlite3.h>

namespace vnquery {
namespace {

using testing::ElementsAre;

/// What stands below the index.
std::vector<std::string> TextsIn(const QAbstractItemModel& model, const QModelIndex& parent = {},
                                 int role = Qt::DisplayRole) {
    std::vector<std::string> texts;
    for (int row = 0; row < model.rowCount(parent); ++row)
        texts.push_back(model.index(row, 0, parent).data(role).toString().toStdString());
    return texts;
}

class CatalogTreeTest : public testing::Test {
protected:
    CatalogTreeTest() { m_tree.show(); }
    void Make(const char* sql) {
        sqlite3* database = nullptr;
        sqlite3_open(m_connection.file.c_str(), &database);
        EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(database);
    }
    void Open() {
        QSignalSpy read(&m_tree, &CatalogTree::CatalogRead);
        m_tree.SetConnection(m_connection);
        ASSERT_TRUE(QTest::qWaitFor([&] { return read.count() == 2; }));
    }
    const QAbstractItemModel& Model() { return *View().model(); }
    QTreeView& View() { return *m_tree.findChild<QTreeView*>(); }
    void WaitForText(const std::string& text, const QModelIndex& parent = {}) {
        EXPECT_TRUE(QTest::qWaitFor([&] {
            const auto texts = TextsIn(Model(), parent);
            return !texts.empty() && texts[0].find(text) != std::string::npos;
        })) << testing::PrintToString(TextsIn(Model(), parent));
    }
    /// The actions of the menu that the menu key opens.
    QList<QAction*> Menu() {
        const QPoint centre(5, 5);
        QContextMenuEvent event(QContextMenuEvent::Keyboard, centre, View().mapToGlobal(centre));
        QCoreApplication::sendEvent(View().viewport(), &event);
        QMenu* const menu = m_tree.findChildren<QMenu*>().last();
        menu->close();
        return menu->actions();
    }

    vnbytstr::test::TemporaryFolder m_folder;
    Connection m_connection{m_folder.File("test.sqlite"), ""};
    CatalogTree m_tree;
};

TEST_F(CatalogTreeTest, TablesOpenAndAreBrowsed) {
    Make(
        "create table film(id integer primary key, \"a b\" text not null); create view best as "
        "select 1 as one; create table actor(name text); create unique index names on actor(name); "
        "create trigger named after insert on actor begin select 1; end");
    Open();
    EXPECT_THAT(TextsIn(Model()), ElementsAre("actor", "best", "film"));
    EXPECT_EQ(m_tree.GetCatalog()->tables[2].columns.size(), 2u);
    const QModelIndex film = Model().index(2, 0);
    ASSERT_TRUE(Model().hasChildren(film));
    View().setCurrentIndex(film);
    QTest::keyClick(&View(), Qt::Key_Right);
    WaitForText("id", film);
    EXPECT_THAT(TextsIn(Model(), film), ElementsAre("id INTEGER PRIMARY KEY", "a b TEXT NOT NULL"));
    for (const auto& text : TextsIn(Model(), film, Qt::AccessibleTextRole))
        EXPECT_GT(text.size(), std::string("a b TEXT NOT NULL").size()); // says what it is
    View().expand(Model().index(0, 0));
    WaitForText("name", Model().index(0, 0));
    EXPECT_THAT(TextsIn(Model(), Model().index(0, 0)),
                ElementsAre("name TEXT", "names UNIQUE (name)", "named TRIGGER"));

    QSignalSpy browse(&m_tree, &CatalogTree::Browse);
    QTest::keyClick(&View(), Qt::Key_Return);
    ASSERT_EQ(browse.count(), 1);
    EXPECT_EQ(browse[0][0].toString(), QStringLiteral("select * from film"));
    View().collapseAll();
    const QPoint place = View().visualRect(Model().index(1, 0)).center();
    QTest::mouseClick(View().viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(View().viewport(), Qt::LeftButton, {}, place);
    EXPECT_EQ(browse.last()[0].toString(), QStringLiteral("select * from best"));

    auto* const filter = m_tree.findChild<QLineEdit*>();
    QTest::keyClicks(filter, QStringLiteral("ACT"));
    EXPECT_THAT(TextsIn(Model()), ElementsAre("actor"));
    filter->clear();
    EXPECT_EQ(Model().rowCount(), 3);
}

TEST_F(CatalogTreeTest, TheMenuGivesNamesDefinitionAndCount) {
    Make("create table \"my film\"(id int, \"order\" int)");
    Open();
    View().setCurrentIndex(Model().index(0, 0));
    QSignalSpy insert(&m_tree, &CatalogTree::Insert);
    QSignalSpy count(&m_tree, &CatalogTree::Count);
    QSignalSpy ddl(&m_tree, &CatalogTree::ShowDdl);
    const QList<QAction*> actions = Menu();
    for (qsizetype i = 0; i + 1 < actions.size(); ++i) // the last one reads all again
        actions[i]->trigger();
    EXPECT_EQ(count[0][0].toString(), QStringLiteral("select count(*) from \"my film\""));
    ASSERT_EQ(insert.count(), 2);
    EXPECT_EQ(insert[0][0].toString(), QStringLiteral("\"my film\""));
    EXPECT_EQ(insert[1][0].toString(), QStringLiteral("id, \"order\""));
    EXPECT_TRUE(QTest::qWaitFor([&] { return ddl.count() == 1; }));
    EXPECT_EQ(ddl[0][0].toString(),
              QStringLiteral("CREATE TABLE \"my film\"(id int, \"order\" int);\n"));
    // A column's name, and a table that was made meanwhile.
    View().expand(Model().index(0, 0));
    WaitForText("id", Model().index(0, 0));
    View().setCurrentIndex(Model().index(1, 0, Model().index(0, 0)));
    Menu()[3]->trigger();
    EXPECT_EQ(insert.last()[0].toString(), QStringLiteral("\"order\""));
    Make("create table another(a)");
    Menu().last()->trigger();
    WaitForText("another");
}

TEST_F(CatalogTreeTest, ErrorsStandInTheTree) {
    m_tree.SetConnection(m_connection);
    WaitForText(m_connection.file); // there is no such file
    Make("create table gone(a); create view broken as select a from gone; drop table gone");
    Open();
    View().expand(Model().index(0, 0));
    WaitForText("gone", Model().index(0, 0));
    m_tree.SetConnection({});
    EXPECT_EQ(Model().rowCount(), 0);
    EXPECT_EQ(m_tree.GetCatalog(), nullptr);
}

class HistoryPaneTest : public testing::Test {
protected:
    HistoryPaneTest() { qputenv("VNBYTSTR_PROFILE", m_folder.File("profile").c_str()); }
    ~HistoryPaneTest() override { qunsetenv("VNBYTSTR_PROFILE"); }
    vnbytstr::test::TemporaryFolder m_folder;
};

TEST_F(HistoryPaneTest, WhatRanIsFoundAndChosen) {
    HistoryPane pane;
    pane.show();
    pane.Add({"select\n  1", "shop.db", 1700000000, 1500, 1, ""});
    pane.Add({"select x", "shop.db", 1700000000, 3, -1, "no such column"});
    auto* const ran = pane.widget(0)->findChild<QTreeView*>();
    auto* const search = pane.widget(0)->findChild<QLineEdit*>();
    EXPECT_THAT(TextsIn(*ran->model()), ElementsAre("select x", "select 1"));
    search->setText(QStringLiteral("NO SUCH"));
    EXPECT_THAT(TextsIn(*ran->model()), ElementsAre("select x"));
    search->clear();
    QSignalSpy chosen(&pane, &HistoryPane::Chosen);
    ran->setCurrentIndex(ran->model()->index(1, 2));
    QTest::keyClick(ran, Qt::Key_Return);
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen[0][0].toString(), QStringLiteral("select\n  1"));
    // Another window sees what was saved here.
    EXPECT_TRUE(SavedQueries::Save("ö = b", "select\n2;"));
    EXPECT_TRUE(SavedQueries::Save("a", "select 3"));
    EXPECT_TRUE(SavedQueries::Rename("a", "z"));
    HistoryPane other;
    other.show();
    other.setCurrentIndex(1);
    auto* const saved = other.widget(1)->findChild<QTreeView*>();
    EXPECT_THAT(TextsIn(*saved->model()), ElementsAre("z", "ö = b"));
    EXPECT_EQ(SavedQueries::Get("ö = b"), "select\n2;");
    EXPECT_TRUE(SavedQueries::Delete("z"));
    EXPECT_EQ(SavedQueries::GetAll().size(), 1u);
}

} // namespace
} // namespace vnquery
