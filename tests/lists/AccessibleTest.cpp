// What screen readers are told.
#include "tests/lists/ListFixture.h"

#include "vnbytstr/Language.h"
#include "vnbytstr/framework/Module.h"

#include <QAccessible>
#include <QAccessibleInterface>

namespace vnbytstr::test {
namespace {

class AccessibleList : public ListFixture {
protected:
    void SetUp() override {
        ListFixture::SetUp();
        root = QAccessible::queryAccessibleInterface(Widget());
        ASSERT_NE(root, nullptr);
        table = Find(root);
        ASSERT_NE(table, nullptr);
    }
    static QAccessibleTableInterface* Find(QAccessibleInterface* node) {
        if (node->tableInterface() != nullptr)
            return node->tableInterface();
        for (int i = 0; i < node->childCount(); ++i)
            if (QAccessibleInterface* child = node->child(i); child != nullptr)
                if (QAccessibleTableInterface* table = Find(child); table != nullptr)
                    return table;
        return nullptr;
    }

    QAccessibleInterface* root = nullptr;
    QAccessibleTableInterface* table = nullptr;
};

TEST_F(AccessibleList, TellsRowsColumnsAndTexts) {
    EXPECT_EQ(table->rowCount(), 5);
    EXPECT_EQ(table->columnCount(), 3);
    EXPECT_EQ(table->columnDescription(1).toStdString(), "City");
    for (int row = 0; row < 5; ++row)
        for (int column = 0; column < 3; ++column) {
            QAccessibleInterface* cell = table->cellAt(row, column);
            ASSERT_NE(cell, nullptr);
            EXPECT_EQ(cell->text(QAccessible::Name).toStdString(), kRows[row][column]);
        }
    POINT origin{0, 0};
    list->ClientToScreen(&origin);
    EXPECT_EQ(table->cellAt(2, 1)->rect(),
              QRect(origin.x + 100, origin.y + 2 * RowHeight(), 100, RowHeight()));
}

TEST_F(AccessibleList, TellsAndChangesTheSelection) {
    list->SetOnlySel(3);
    EXPECT_EQ(table->selectedRows(), QList<int>{3});
    EXPECT_TRUE(table->isRowSelected(3));
    EXPECT_FALSE(table->isRowSelected(2));
    EXPECT_TRUE(table->selectRow(1));
    EXPECT_EQ(list->GetFirstSel(), 1);
}

TEST_F(AccessibleList, CellsTellTheirHeadersAndHits) {
    const auto headers = [this](int row, int column) {
        QAccessibleTableCellInterface* cell = table->cellAt(row, column)->tableCellInterface();
        const QList<QAccessibleInterface*> all = cell->rowHeaderCells() + cell->columnHeaderCells();
        std::string names;
        for (QAccessibleInterface* header : all)
            names += header->text(QAccessible::Name).toStdString() + " ";
        return names;
    };
    EXPECT_EQ(headers(1, 2), "Alpha Number ");
    EXPECT_EQ(table->rowDescription(3).toStdString(), "bravo");
    EXPECT_EQ(table->rowDescription(5).toStdString(), "");
    const auto said = [this](int row, int column) {
        return table->cellAt(row, column)->text(QAccessible::Description).toStdString();
    };
    EXPECT_EQ(said(1, 1), "");
    list->FindText("linz");
    EXPECT_EQ(said(1, 1), "contains the text searched for");
    EXPECT_EQ(said(0, 1), "");
    ASSERT_TRUE(list->CreateHeadingsControl(1001));
    ASSERT_TRUE(list->EnableFilterRow());
    list->SetColumnName(1, "Town");
    CEdit* const field = list->GetFilterRow()->GetField(1);
    ASSERT_NE(field, nullptr);
    field->SetFocus();
    EXPECT_EQ(QApplication::focusWidget()->accessibleName().toStdString(), "Filter: Town");
    list->HideColumn(0);
    EXPECT_EQ(headers(1, 2), "Linz Number ");
}

TEST_F(AccessibleList, HeadingsTellTheSortInTheUsersLanguage) {
    const auto said = [&] {
        std::vector<std::string> texts;
        for (int column = 0; column < 3; ++column)
            texts.push_back(root->child(column)->text(QAccessible::Description).toStdString());
        return texts;
    };
    EXPECT_EQ(said(), (std::vector<std::string>{"", "", ""}));
    list->Sort(1);
    EXPECT_EQ(said(), (std::vector<std::string>{"", "sorted ascending", ""}));
    const HINSTANCE before = AfxGetResourceHandle();
    ::setenv("LC_ALL", "de_DE.UTF-8", 1);
    EXPECT_NE(LoadResourceDLL("vnurc"), nullptr);
    ::unsetenv("LC_ALL");
    list->Sort(1);
    EXPECT_EQ(said(), (std::vector<std::string>{"", "absteigend sortiert", ""}));
    AfxSetResourceHandle(before);
}

} // namespace
} // namespace vnbytstr::test
