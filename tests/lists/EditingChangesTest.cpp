// Rows, editors and the list itself change while an editor is open or the parent is being asked.
#include "tests/lists/ListFixture.h"

namespace vnbytstr::test {
namespace {

TEST_F(Editing, TheParentStoresAgainWhileItIsAsked) {
    EditAndType(1, 0, "once");
    parent.OnStore([this] {
        EXPECT_FALSE(list->CellEnter(TRUE));
        list->StartEditing(0, 2); // not now
    });
    EXPECT_TRUE(list->CellEnter(TRUE));
    Pump();
    EXPECT_EQ(parent.Take(), (Asked{"store 0 once", "closed"}));
    EXPECT_EQ(Cell(1, 0), "once");
}

TEST_F(Editing, TheParentClosesTheEditorWhileItIsAsked) {
    EditAndType(1, 0, "discarded");
    parent.OnStore([this] { list->CellCancel(); });
    EXPECT_TRUE(list->CellEnter(TRUE));
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(Cell(1, 0), "Alpha");
    EXPECT_FALSE(list->m_bCommitting);
}

TEST_F(Editing, TheParentRemovesRowsWhileItIsAsked) {
    EditAndType(2, 0, "moved");
    parent.OnStore([this] { list->SendMessage(LB_DELETESTRING, 0); });
    list->CellEnter(TRUE);
    EXPECT_EQ(Column(0), "Alpha moved bravo echo"); // stored in its own row
    parent.onAsked = [this](UINT message) -> LRESULT {
        if (message == VNM_OPENCELL)
            list->SendMessage(LB_DELETESTRING, 0);
        return 0;
    };
    list->EditColumn(2, 0);
    EXPECT_TRUE(IsOpenAt(1, 0)); // likewise opened
    EXPECT_EQ(EditorText(), "bravo");
    parent.OnStore([this] { list->ResetContent(); });
    EXPECT_TRUE(list->CellEnter(TRUE));
    EXPECT_EQ(list->GetCount(), 0);
    EXPECT_FALSE(IsOpen());
}

TEST_F(Editing, TheParentDestroysTheWindowWhileItIsAsked) {
    const std::function<void()> triggers[] = {
        [this] { list->CellEnter(TRUE); }, [] { Key(Qt::Key_Tab); },
        [this] { Click(CellPoint(3, 0)); }, [this] { list->Sort(0); },
        [this] { list->SendMessage(WM_VSCROLL, SB_LINEDOWN, 0); }};
    for (const auto& act : triggers) {
        SetUp();
        list->EditColumn(1, 0);
        parent.OnStore([this] { list->DestroyWindow(); });
        act();
        EXPECT_EQ(list->GetSafeHwnd(), nullptr);
        parent.onAsked = nullptr;
        Pump();
    }
}

TEST_F(Editing, TheParentDeletesTheListWhileItIsAsked) {
    const CPoint elsewhere = CellPoint(3, 0);
    // What is called must not go through the emptied pointer.
    const std::function<void(TestList*)> triggers[] = {
        [](TestList* kept) { kept->CellEnter(TRUE); },
        [](TestList*) { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return); },
        [&](TestList* kept) { Mouse(*kept, QEvent::MouseButtonPress, elsewhere); },
        [](TestList* kept) { kept->StartEditing(1, 0); }};
    for (const auto& act : triggers) {
        SetUp();
        list->EditColumn(1, 0);
        parent.onAsked = [this](UINT message) -> LRESULT {
            if (message != VNM_EDITORCLOSED)
                delete list.release();
            return 0;
        };
        act(list.get());
        Pump();
        EXPECT_EQ(list, nullptr);
        parent.onAsked = nullptr;
    }
}

TEST_F(Editing, AnEditorMovesWithItsRow) {
    EditAndType(2, 0, "typed");
    list->InsertStringItems(0, "first", "", "");
    EXPECT_EQ(EditorRect().top, 3 * RowHeight());
    list->ResetContent();
    EXPECT_FALSE(IsOpen());
    Pump();
    EXPECT_EQ(CWnd::GetFocus(), list.get());
    list->StartEditing(0, 0);
    EXPECT_FALSE(IsOpen());
}

TEST_F(Editing, TheListIsDestroyedWithAnOpenEditor) {
    list->EditColumn(1, 0);
    list->DestroyWindow();
    Pump();
    EXPECT_FALSE(IsOpen());
    SetUp();
    list->EditColumn(1, 0);
    list->GetActiveEditor()->DestroyWindow();
    EXPECT_FALSE(IsOpen());
    EXPECT_TRUE(list->CellEnter(TRUE));
}

} // namespace
} // namespace vnbytstr::test
