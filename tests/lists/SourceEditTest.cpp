// A list of a source: editors, what belongs to rows, copying, screen readers.
#include "tests/lists/SourceFixture.h"

#include <QAccessible>
#include <QAccessibleInterface>

namespace vnbytstr::test {
namespace {

TEST_F(RowSource, AnEditorStaysWithItsRow) {
    Make(WS_VSCROLL);
    TestSource many(100);
    list->SetRowSource(&many);
    list->SetEditorType(0, kEditorText);
    list->SendMessage(LB_SETTOPINDEX, 50);
    EditAndType(55, 0, "typed");
    many.count = 57; // the last rows now end at the bottom: the view scrolls
    list->RowsChanged();
    EXPECT_LT(Top(), 50);
    EXPECT_EQ(EditorRect().top, (55 - Top()) * RowHeight());
    many.count = 55; // its row is gone
    list->RowsChanged();
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(parent.Take(), Asked{});
}

TEST_F(RowSource, EditorsStoreInTheSource) {
    list->SetRowSource(&source);
    list->SetEditorType(0, kEditorText);
    list->SetEditorType(2, kEditorNumber);
    EditAndType(3, 0, "new");
    Key(Qt::Key_Return);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(source.stored, (std::vector<std::string>{"3,0:new"}));
    EXPECT_EQ(parent.Take(), (Asked{"store 0 new", "closed"}));
    EXPECT_EQ(Cell(3, 0), "new");

    EditAndType(4, 2, "17");
    source.onSet = [this] { // as a message box does
        parent.SetFocus();
        return false;
    };
    source.stored.clear();
    Key(Qt::Key_Tab);
    EXPECT_EQ(source.stored.size(), 1U);
    EXPECT_TRUE(IsOpenAt(4, 2)); // refused: it stays, with its text
    list->GetActiveEditor()->SetFocus();
    source.onSet = [] { return false; };
    EXPECT_EQ(EditorText(), "17");
    EXPECT_EQ(Cell(4, 2), "9");
    Key(Qt::Key_Escape);
    EXPECT_FALSE(IsOpen());

    list->SetOnlySel(0);
    int shown = 0;
    list->onZoom = [&](CString& value) {
        value = "zoomed";
        return ++shown < 3 ? IDOK : IDCANCEL; // refused: shown again
    };
    Key(Qt::Key_F2, Qt::ShiftModifier);
    EXPECT_EQ(list->zooms, (std::vector<std::string>{"0,0:delta", "0,0:zoomed", "0,0:zoomed"}));
    EXPECT_FALSE(list->UpdateStringItem(0, 0, "x"));

    source.onSet = [this] { // takes the row away, and itself
        source.rows.resize(2);
        list->RowsChanged();
        return false;
    };
    EditAndType(4, 0, "gone");
    Key(Qt::Key_Return);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(list->GetCount(), 2);
    source.onSet = [this] {
        list->SetRowSource(nullptr);
        return true;
    };
    EditAndType(0, 0, "last");
    Key(Qt::Key_Return);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(list->GetCount(), 0);

    list->SetRowSource(&source);
    source.onSet = [this] {
        list.reset();
        return true;
    };
    EditAndType(1, 2, "5");
    Key(Qt::Key_Return);
    EXPECT_EQ(list, nullptr);
}

TEST_F(RowSource, TextsAreRefusedAndCopied) {
    Make(LBS_EXTENDEDSEL);
    list->SetRowSource(&source);
    EXPECT_EQ(list->AddStringItems("a", "b", "c"), LB_ERR);
    EXPECT_EQ(list->InsertStringItems(0, "a", "b", "c"), LB_ERR);
    for (const UINT message : {LB_ADDSTRING, LB_INSERTSTRING, LB_DELETESTRING, LB_FINDSTRING})
        EXPECT_EQ(list->SendMessage(message, 0, reinterpret_cast<LPARAM>("delta")), LB_ERR);
    list->SetItemTip(0, "tip");
    EXPECT_EQ(list->GetItemIndex(0), -1);
    EXPECT_EQ(list->GetCount(), 5);

    TestSource many(kMany);
    list->SetRowSource(&many);
    list->EnableCopy();
    list->SendMessage(LB_SELITEMRANGEEX, 9'000'000, 9'000'001);
    list->SendMessage(LB_SETSEL, TRUE, 7);
    list->SetFocus();
    many.Reset();
    Key(Qt::Key_C, Qt::ControlModifier);
    CString text;
    GetClipboardText(text);
    EXPECT_STREQ(text, "Name\tCity\tNumber\r\n7.0\t7.1\t7.2\r\n"
                       "9000000.0\t9000000.1\t9000000.2\r\n9000001.0\t9000001.1\t9000001.2\r\n");
}

TEST_F(RowSource, ScreenReadersReadTheSource) {
    TestSource many(kMany);
    Make(WS_VSCROLL | LBS_EXTENDEDSEL);
    list->SetRowSource(&many);
    list->SetEditorType(2, kEditorText);
    QAccessibleInterface* root = QAccessible::queryAccessibleInterface(Widget());
    ASSERT_NE(root, nullptr);
    QAccessibleTableInterface* table = root->tableInterface();
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->rowCount(), kMany);
    EXPECT_EQ(root->childCount(), (kMany + 1) * 3);
    QAccessibleInterface* cell = table->cellAt(kMany - 1, 2);
    EXPECT_EQ(cell->text(QAccessible::Name).toStdString(), std::to_string(kMany - 1) + ".2");
    EXPECT_TRUE(cell->state().offscreen);
    EXPECT_TRUE(cell->state().editable);
    EXPECT_TRUE(table->selectRow(kMany - 2));
    EXPECT_TRUE(table->selectRow(5));
    EXPECT_EQ(table->selectedRows(), (QList<int>{5, kMany - 2}));
    EXPECT_EQ(root->child(4)->text(QAccessible::Name).toStdString(), "0.1");
    many.count = 1'000'000'000; // more cells than children can be counted
    list->RowsChanged();
    EXPECT_EQ(root->childCount(), INT_MAX);
    EXPECT_EQ(table->cellAt(999'999'999, 1)->text(QAccessible::Name).toStdString(), "999999999.1");
}

TEST_F(RowSource, WhatBelongsToARowIsAskedFor) {
    list->SetRowSource(&source);
    list->SetDragDrop(0, TRUE);
    list->SetEditSubType(0, kEditorFolder);
    list->SetEditDataType(0, kDataClob);
    EXPECT_FALSE(list->GetDragDrop(0));
    EXPECT_TRUE(list->GetDragDrop(1));
    EXPECT_EQ(list->GetEditSubType(0), 1);
    EXPECT_EQ(list->GetEditSubType(1), kEditorFile);
    EXPECT_EQ(list->GetEditDataType(2), kDataBlob);
    EXPECT_FALSE(list->GetDragDrop(5));
    EXPECT_EQ(list->GetFileName(0), nullptr);
    EXPECT_STREQ(list->GetFileName(1), "/tmp/of-row-1");
    CString value("bytes");
    list->GetDisplayString(value, 2);
    EXPECT_STRNE(value, "bytes");
    list->SetEditorType(0, kEditorText);
    EditAndType(1, 0, "/tmp/other");
    Key(Qt::Key_Return);
    EXPECT_EQ(source.fileName, "/tmp/other");
}

} // namespace
} // namespace vnbytstr::test
