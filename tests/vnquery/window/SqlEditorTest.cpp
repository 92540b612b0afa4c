#include "examples/vnquery/window/SqlEditor.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <QVBoxLayout>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vnquery {
namespace {

using testing::ElementsAre;

class SqlEditorTest : public testing::Test {
protected:
    SqlEditorTest() {
        const auto catalog = std::make_shared<Catalog>(Catalog{SqlServer::Sqlite, {}});
        catalog->tables = {{"", "film", false, false}, {"", "filter", false, false}};
        catalog->tables[0].columns = {{"title", "text", ""}, {"Groß x", "text", ""}};
        m_editor.SetCatalog(catalog);
        m_editor.show();
        m_editor.activateWindow();
        m_editor.setFocus();
    }
    void Set(const QString& text, int cursor) {
        m_editor.setPlainText(text);
        QTextCursor place = m_editor.textCursor();
        place.setPosition(cursor);
        m_editor.setTextCursor(place);
    }
    void Select(int begin, int end) {
        QTextCursor place = m_editor.textCursor();
        place.setPosition(begin);
        place.setPosition(end, QTextCursor::KeepAnchor);
        m_editor.setTextCursor(place);
    }
    std::vector<std::string> Pieces(SqlEditor::Which which) {
        std::vector<std::string> texts;
        for (const SqlPiece& piece : m_editor.GetPieces(which))
            texts.push_back(piece.sql + "@" + std::to_string(piece.position));
        return texts;
    }
    QWidget* Popup() { return m_editor.findChild<QCompleter*>()->popup(); }
    /// Colours of a line: one letter for each unit, the same for the same format.
    std::string Colours(int line) {
        const QTextBlock block = m_editor.document()->findBlockByNumber(line);
        std::string colours(static_cast<std::size_t>(block.length() - 1), '.');
        for (const QTextLayout::FormatRange& range : block.layout()->formats())
            for (int at = range.start; at < range.start + range.length; ++at)
                colours[static_cast<std::size_t>(at)] = range.format.fontWeight() == QFont::Bold
                                                            ? 'k'
                                                        : range.format.fontItalic() ? 'c'
                                                                                    : 'x';
        return colours;
    }

    SqlEditor m_editor;
};

TEST_F(SqlEditorTest, StatementsToRunAreWhereTheUserSeesThem) {
    using Which = SqlEditor::Which;
    Set(QStringLiteral("select 'ä😀;';\nselect 2;\n\n select 3"), 0);
    EXPECT_THAT(Pieces(Which::All),
                ElementsAre("select 'ä😀;';@0", "\nselect 2;@14", "\n\n select 3@24"));
    EXPECT_THAT(Pieces(Which::AtCursor), ElementsAre("select 'ä😀;';@0"));
    const std::pair<int, int> kStatements[] = {{14, 0},  {15, 14}, {24, 14},
                                               {26, 14}, {27, 24}, {35, 24}};
    for (const auto& [cursor, position] : kStatements) {
        Select(cursor, cursor);
        ASSERT_EQ(m_editor.GetPieces(Which::AtCursor).size(), 1u);
        EXPECT_EQ(m_editor.GetPieces(Which::AtCursor)[0].position, position) << cursor;
    }
    Select(7, 23);
    EXPECT_THAT(Pieces(Which::Selection), ElementsAre("'ä😀;';@7", "\nselect 2@14"));
    Set(QStringLiteral(" -- nothing"), 3);
    EXPECT_TRUE(m_editor.GetPieces(Which::AtCursor).empty());
}

TEST_F(SqlEditorTest, ErrorsStandAtTheirPlaceUntilTheTextChanges) {
    Set(QStringLiteral("select 1;\nselect 'ä😀', nothing from t"), 0);
    const SqlPiece piece = m_editor.GetPieces(SqlEditor::Which::All)[1];
    const auto marked = [&] {
        const auto marks = m_editor.extraSelections();
        return marks.isEmpty() ? std::string() : marks.last().cursor.selectedText().toStdString();
    };
    m_editor.ShowError(piece, piece.sql.find("nothing"), 0, QStringLiteral("no such column"));
    EXPECT_EQ(marked(), "nothing");
    EXPECT_EQ(m_editor.textCursor().position(), 24);
    EXPECT_EQ(m_editor.accessibleDescription(), QStringLiteral("no such column"));
    QTest::keyClick(&m_editor, Qt::Key_X);
    EXPECT_EQ(marked(), "");
    EXPECT_EQ(m_editor.accessibleDescription(), QString());
    m_editor.ShowError(piece, 0, 0, QStringLiteral("late")); // the text is another one now
    EXPECT_EQ(marked(), "");
    m_editor.ShowError(m_editor.GetPieces(SqlEditor::Which::All)[0], 1000, 5,
                       QStringLiteral("end"));
    EXPECT_EQ(marked().size(), 3u); // the paragraph separator
}

TEST_F(SqlEditorTest, CompletionOffersAndTakesNames) {
    QTest::keyClicks(&m_editor, QStringLiteral("select * from fi"));
    EXPECT_FALSE(Popup()->isVisible());
    QTest::keyClick(&m_editor, Qt::Key_L);
    ASSERT_TRUE(Popup()->isVisible());
    QTest::keyClick(Popup(), Qt::Key_Down);
    QTest::keyClick(Popup(), Qt::Key_Return);
    EXPECT_EQ(m_editor.toPlainText(), QStringLiteral("select * from filter"));
    EXPECT_FALSE(Popup()->isVisible());
    Set(QStringLiteral("select f from film f"), 8);
    QTest::keyClick(&m_editor, Qt::Key_Period);
    ASSERT_TRUE(Popup()->isVisible());
    QTest::keyClick(Popup(), Qt::Key_Enter);
    EXPECT_EQ(m_editor.toPlainText(), QStringLiteral("select f.\"Groß x\" from film f"));
    m_editor.undo();
    EXPECT_EQ(m_editor.toPlainText(), QStringLiteral("select f. from film f"));
    QTest::keyClick(&m_editor, Qt::Key_Space, Qt::ControlModifier);
    ASSERT_TRUE(Popup()->isVisible());
    QTest::keyClick(Popup(), Qt::Key_Escape);
    EXPECT_FALSE(Popup()->isVisible());
}

TEST_F(SqlEditorTest, FormatAndCommentsAreOneStepForUndo) {
    const QString before = QStringLiteral("select 'ä  b'  from t where 1");
    Set(before, 24);
    m_editor.Format();
    EXPECT_EQ(m_editor.toPlainText(), QStringLiteral("SELECT 'ä  b'\nFROM t\nWHERE 1"));
    EXPECT_EQ(m_editor.textCursor().position(), 23); // after "WH", as before
    m_editor.undo();
    EXPECT_EQ(m_editor.toPlainText(), before);
    EXPECT_FALSE(m_editor.document()->isUndoAvailable());
    Set(QStringLiteral("a\nb\nc"), 0);
    Select(0, 4); // up to the begin of the third line
    m_editor.ToggleComment();
    EXPECT_EQ(m_editor.toPlainText(), QStringLiteral("-- a\n-- b\nc"));
    m_editor.ToggleComment();
    EXPECT_EQ(m_editor.toPlainText(), QStringLiteral("a\nb\nc"));
    m_editor.undo();
    EXPECT_EQ(m_editor.toPlainText(), QStringLiteral("-- a\n-- b\nc"));
}

TEST_F(SqlEditorTest, ColoursGoOnAcrossLines) {
    Set(QStringLiteral("select 'a\nfrom' from /* x\nselect */ :from ::from"), 0);
    EXPECT_EQ(Colours(0), "kkkkkk.xx");
    EXPECT_EQ(Colours(1), "xxxxx.kkkk.cccc");
    EXPECT_EQ(Colours(2), "ccccccccc.xxxxx...kkkk");
    m_editor.moveCursor(QTextCursor::End);
    QTest::keyClick(&m_editor, Qt::Key_Return);
    QTest::keyClicks(&m_editor, QStringLiteral("from t"));
    EXPECT_EQ(Colours(3), "kkkk..");
}

TEST_F(SqlEditorTest, BracketsMatchAndKeysDoNotTrap) {
    Set(QStringLiteral("f('(', (1))"), 11);
    ASSERT_EQ(m_editor.extraSelections().size(), 2);
    EXPECT_EQ(m_editor.extraSelections()[0].cursor.selectionStart(), 1);
    Set(QStringLiteral("  a"), 3);
    QTest::keyClick(&m_editor, Qt::Key_Return);
    EXPECT_EQ(m_editor.toPlainText(), QStringLiteral("  a\n  "));
    EXPECT_TRUE(m_editor.tabChangesFocus());
    EXPECT_FALSE(m_editor.accessibleName().isEmpty());
    EXPECT_FALSE(m_editor.placeholderText().isEmpty());
}

} // namespace
} // namespace vnquery
