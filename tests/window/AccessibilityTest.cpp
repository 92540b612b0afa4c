// A walk through what screen readers see, and message boxes.
#include "tests/window/WindowFixture.h"
#include "vnbytstr/Interaction.h"
#include "vnbytstr/framework/Module.h"
#include "vnbytstr/window/AccessibleTable.h"
#include "vnbytstr/window/ListBox.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QMessageBox>
#include <QTimer>

#include <atomic>
#include <thread>

namespace {

/// A list of two columns that tells its cells.
class TellingList : public CListBox, public CAccessibleTable {
public:
    int GetAccessibleRowCount() const override { return GetCount(); }
    int GetAccessibleColumnCount() const override { return 2; }
    CString GetAccessibleCellText(int row, int column) const override {
        CString text;
        text.Format("%d/%d", row, column);
        return text;
    }
    CString GetAccessibleHeading(int column) const override { return column == 0 ? "A" : "B"; }
    Sort GetAccessibleSort(int column) const override {
        return column == 1 ? Sort::Descending : Sort::None;
    }
    bool IsAccessibleRowSelected(int row) const override { return GetSel(row) > 0; }
    bool SelectAccessibleRow(int row, bool on) override { return SetSel(row, on) != LB_ERR; }
    int GetAccessibleFocusRow() const override { return GetCaretIndex(); }
    CRect GetAccessibleCellRect(int row, int column) const override {
        CRect rect;
        GetItemRect(row, rect);
        return {column * 50, rect.top, column * 50 + 50, rect.bottom};
    }
};

class Accessibility : public WindowTest<> {
protected:
    void Create(CListBox& list, DWORD style) {
        ASSERT_TRUE(
            list.Create(WS_VISIBLE | WS_TABSTOP | style, CRect(0, 0, 100, 60), &m_frame, 5));
        for (const char* text : {"one", "two", "three"})
            list.AddString(text);
    }
    static QAccessibleInterface* Of(const CWnd& window) {
        return QAccessible::queryAccessibleInterface(window.GetWidget());
    }
};

/// Presses a button of the message box that opens.
void AnswerBox(const char* label, QString* seen = nullptr) {
    QTimer::singleShot(0, [label, seen] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        if (seen != nullptr)
            *seen = box->windowTitle() + "|" + box->text();
        for (QAbstractButton* button : box->buttons())
            if (button->text().remove('&') == label)
                button->click();
    });
}

} // namespace

TEST_F(Accessibility, ATableOfCellsAndHeadings) {
    TellingList list;
    Create(list, LBS_EXTENDEDSEL);
    list.SetAccessibleTable(&list);
    QAccessibleInterface* table = Of(list);
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->role(), QAccessible::Table);
    ASSERT_EQ(table->childCount(), 8);
    QAccessibleInterface* heading = table->child(1);
    EXPECT_EQ(heading->role(), QAccessible::ColumnHeader);
    EXPECT_EQ(heading->text(QAccessible::Name), "B");
    EXPECT_EQ(heading->text(QAccessible::Description), "sorted descending");
    EXPECT_EQ(table->child(8), nullptr);

    QAccessibleTableInterface* cells = table->tableInterface();
    ASSERT_NE(cells, nullptr);
    EXPECT_EQ(cells->rowCount(), 3);
    QAccessibleInterface* cell = cells->cellAt(2, 1);
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ(cell->text(QAccessible::Name), "2/1");
    EXPECT_EQ(table->indexOfChild(cell), 7);
    EXPECT_EQ(cell, table->child(7));
    EXPECT_EQ(cell->tableCellInterface()->columnHeaderCells().value(0), heading);
    EXPECT_EQ(table->childAt(cell->rect().center().x(), cell->rect().center().y()), cell);
    EXPECT_FALSE(cell->state().selected);
    EXPECT_TRUE(cells->selectRow(2));
    EXPECT_TRUE(cell->state().selected);
    EXPECT_EQ(cells->selectedRows(), QList<int>{2});
    list.SetFocus();
    EXPECT_EQ(table->focusChild(), cells->cellAt(2, 0));
    list.DeleteString(2);
    EXPECT_FALSE(cell->isValid());
    EXPECT_EQ(cell->text(QAccessible::Name), "");
    EXPECT_EQ(cells->cellAt(2, 1), nullptr);
    list.DestroyWindow();
}

TEST_F(Accessibility, APlainListTellsItsTexts) {
    CListBox list;
    Create(list, 0);
    QAccessibleInterface* table = Of(list);
    ASSERT_EQ(table->childCount(), 3);
    EXPECT_EQ(table->child(1)->text(QAccessible::Name), "two");
    EXPECT_TRUE(table->tableInterface()->selectRow(1));
    EXPECT_EQ(list.GetCurSel(), 1);
    list.DestroyWindow();
}

TEST_F(Accessibility, MessageBoxesAreWindows) {
    QString seen;
    AnswerBox("No", &seen);
    EXPECT_EQ(m_frame.MessageBox("Save <b>it</b>?", "Title", MB_YESNOCANCEL | MB_ICONQUESTION),
              IDNO);
    EXPECT_EQ(seen, "Title|Save <b>it</b>?");
    AnswerBox("Retry");
    EXPECT_EQ(vnbytstr::Interaction::Current().MessageBox(
                  "text", nullptr, MB_RETRYCANCEL | MB_DEFBUTTON2 | MB_RTLREADING | MB_RIGHT, 0),
              IDRETRY);
    // Escape is Cancel where there is one; the Enter key takes the default button.
    QTimer::singleShot(0,
                       [] { QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape); });
    EXPECT_EQ(AfxMessageBox("text", MB_OKCANCEL), IDCANCEL);
    QTimer::singleShot(0,
                       [] { QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Return); });
    EXPECT_EQ(AfxMessageBox("text", MB_YESNO | MB_DEFBUTTON2), IDNO);
    m_frame.SetActiveWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_frame.GetWidget()));
    // Help asks the window and leaves the box open.
    QTimer::singleShot(0, [] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        box->button(QMessageBox::Help)->click();
        ASSERT_TRUE(box->isVisible());
        QTest::keyClick(box, Qt::Key_Return);
    });
    EXPECT_EQ(AfxMessageBox("text", MB_OK | MB_HELP, 77), IDOK);
    EXPECT_EQ(m_frame.Count(WM_HELP), 1);
}

TEST_F(Accessibility, OtherThreadsShowTheirBoxesOnTheMainOne) {
    std::atomic<int> answer = 0;
    std::thread asking([&] { answer = AfxMessageBox("from a thread", MB_YESNO); });
    QTimer presser;
    QObject::connect(&presser, &QTimer::timeout, [] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            box->buttons().front()->click();
    });
    presser.start(2);
    for (int i = 0; i < 500 && answer == 0; ++i)
        AfxPumpMessages(5);
    asking.join();
    EXPECT_EQ(answer, IDYES);
}
