// When the parent is asked what, and what each answer does.
#include "tests/lists/ListFixture.h"

#include "vnbytstr/Interaction.h"

namespace vnbytstr::test {
namespace {

class Editing : public ListFixture {
protected:
    void SetUp() override {
        ListFixture::SetUp();
        list->SetEditorType(0, kEditorText);
        list->SetEditorType(2, kEditorNumber);
        list->SetEditorRange(2, -10, 200);
    }
};

std::string ClassOf(const CWnd* window) {
    char name[64] = "";
    GetClassName(window->GetSafeHwnd(), name, sizeof name);
    return name;
}

TEST_F(Editing, TheParentIsAskedBeforePlainAndFileCells) {
    const struct {
        int type;
        short subtype;
        bool asks;
        bool opens; ///< when the parent answers 1
    } cases[] = {
        {kEditorNone, 1, false, false},       {kEditorText, 1, true, false},
        {kEditorText, 7, true, false},        {kEditorText, 2, true, false},
        {kEditorText, 3, false, true},        {kEditorFile, 1, true, false},
        {kEditorFolder, 1, false, true},      {kEditorNumber, 1, false, true},
        {kEditorCombo, 1, false, true},       {kEditorPick, 1, false, true},
        {kEditorSortedCombo, 1, false, true}, {kEditorSortedPick, 1, false, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.type) + "/" + std::to_string(c.subtype));
        list->SetEditorType(1, c.type);
        list->SetEditSubType(2, c.subtype);
        for (const LRESULT answer : {0, 1}) {
            parent.Take();
            parent.onAsked = [=](UINT message) { return message == VNM_OPENCELL ? answer : 0; };
            list->EditColumn(2, 1);
            EXPECT_EQ(parent.Take(), c.asks ? Asked{"open 1"} : Asked{});
            EXPECT_EQ(IsOpen(), answer == 0 ? c.type != kEditorNone : c.opens);
            EXPECT_EQ(list->GetFirstSel(), 2);
            list->CellCancel();
            Pump();
        }
    }
}

TEST_F(Editing, EditorsAreTheWindowsTheyShouldBe) {
    CStringArray strings;
    for (const char* text : {"Wien", "Linz", "Enns", "Linz"})
        strings.Add(text);
    list->SetEditorStrings(1, strings);
    list->SetEditorMaxLength(1, 12);
    for (int type = kEditorText; type <= kEditorSortedPick; ++type) {
        SCOPED_TRACE(type);
        list->SetEditorType(1, type);
        list->EditColumn(1, 1);
        ASSERT_TRUE(IsOpenAt(1, 1));
        CWnd* editor = list->GetActiveEditor();
        EXPECT_TRUE(editor->IsWindowVisible());
        EXPECT_EQ(editor->GetParent(), list.get());
        EXPECT_EQ(CWnd::GetFocus() == editor || editor->IsChild(CWnd::GetFocus()), true);
        CRect rect;
        editor->GetWindowRect(rect);
        list->ScreenToClient(rect);
        EXPECT_EQ(rect.left, 100);
        EXPECT_EQ(rect.top, RowHeight());
        if (type <= kEditorNumber) {
            EXPECT_EQ(ClassOf(editor), "EDIT");
            const int units = HIWORD(static_cast<DWORD>(GetDialogBaseUnits()));
            EXPECT_EQ(rect.Height(), (units * 10) >> 3);
            EXPECT_EQ(editor->SendMessage(EM_GETLIMITTEXT), 12);
            EXPECT_EQ(type == kEditorText, rect.Width() == 100); // others share it with a button
        } else {
            EXPECT_EQ(ClassOf(editor), "COMBOBOX");
            const bool sorted = type >= kEditorSortedCombo;
            const bool pick = type == kEditorPick || type == kEditorSortedPick;
            EXPECT_EQ(editor->GetStyle() & 3, pick ? CBS_DROPDOWNLIST : CBS_DROPDOWN);
            EXPECT_EQ((editor->GetStyle() & CBS_SORT) != 0, sorted);
            EXPECT_EQ(editor->SendMessage(CB_GETCOUNT), 4);
            char first[32] = "";
            editor->SendMessage(CB_GETLBTEXT, 0, reinterpret_cast<LPARAM>(first));
            EXPECT_STREQ(first, sorted ? "Enns" : "Wien");
        }
        EXPECT_EQ(EditorText(), type == kEditorFile ? "" : "Linz");
        list->CellCancel();
        Pump();
    }
}

TEST_F(Editing, EnterStoresWhatTheParentAccepts) {
    list->EditColumn(1, 0);
    EXPECT_EQ(EditorText(), "Alpha");
    Type("Omega"); // what was there is selected and replaced
    EXPECT_EQ(EditorText(), "Omega");
    parent.Take();
    Key(Qt::Key_Return);
    EXPECT_EQ(parent.Take(), (Asked{"store 0 Omega", "closed"}));
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(Cell(1, 0), "Omega");
    EXPECT_EQ(CWnd::GetFocus(), list.get());
}

TEST_F(Editing, ARefusedValueStaysInTheEditor) {
    list->EditColumn(1, 0);
    Type("bad");
    parent.onAsked = [](UINT message) { return message == VNM_STOREVALUE; };
    parent.Take();
    Key(Qt::Key_Return);
    EXPECT_EQ(parent.Take(), Asked{"store 0 bad"});
    EXPECT_TRUE(IsOpenAt(1, 0));
    EXPECT_EQ(EditorText(), "bad");
    Key(Qt::Key_Tab); // does not slip past the check
    EXPECT_TRUE(IsOpenAt(1, 0));
    Click(CellPoint(3, 1)); // nor does a click, which is swallowed
    EXPECT_TRUE(IsOpenAt(1, 0));
    EXPECT_EQ(list->GetFirstSel(), 1);
    EXPECT_EQ(EditorText(), "bad");
    EXPECT_EQ(Cell(1, 0), "Alpha");
    parent.Take();
    Key(Qt::Key_Escape);
    EXPECT_EQ(parent.Take(), Asked{"closed"});
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(Cell(1, 0), "Alpha");
    EXPECT_EQ(CWnd::GetFocus(), list.get());
}

TEST_F(Editing, StoringWithoutAskingAndClosing) {
    EXPECT_TRUE(list->CellEnter(TRUE)); // nothing is open
    list->EditColumn(1, 0);
    list->GetActiveEditor()->SetWindowText("quiet");
    parent.Take();
    EXPECT_TRUE(list->CellEnter(FALSE));
    Pump();
    EXPECT_EQ(parent.Take(), Asked{"closed"});
    EXPECT_EQ(Cell(1, 0), "quiet");
    list->CellCancel();
    Pump();
    EXPECT_EQ(parent.Take(), Asked{}); // nothing is open
    list->StopEditing();
    Pump();
    EXPECT_EQ(parent.Take(), Asked{"closed"}); // this one says so regardless
}

TEST_F(Editing, TabGoesThroughTheEditableCells) {
    list->EditColumn(3, 0);
    Key(Qt::Key_Tab);
    EXPECT_TRUE(IsOpenAt(3, 2)) << list->m_nCurRow << ',' << list->m_nCurColumn;
    Key(Qt::Key_Tab); // on to the next row
    EXPECT_TRUE(IsOpenAt(4, 0));
    Key(Qt::Key_Tab);
    EXPECT_TRUE(IsOpenAt(4, 2));
    Key(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(IsOpenAt(4, 0));
    parent.Take();
    Key(Qt::Key_Backtab, Qt::ShiftModifier); // never to the row before
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(parent.Take(), (Asked{"store 0 echo", "closed"}));
    list->EditColumn(4, 2);
    Key(Qt::Key_Tab); // nothing after the last cell
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(Cell(4, 2), "9");
}

TEST_F(Editing, F2OpensTheFirstEditableCell) {
    Key(Qt::Key_F2); // no row is selected
    EXPECT_FALSE(IsOpen());
    list->SetOnlySel(2);
    Key(Qt::Key_F2);
    EXPECT_TRUE(IsOpenAt(2, 0));
    Key(Qt::Key_Escape);
    list->SetEditorType(0, kEditorNone);
    Key(Qt::Key_F2);
    EXPECT_TRUE(IsOpenAt(2, 2));
    Key(Qt::Key_Escape);
    list->EnableEditing(FALSE);
    Key(Qt::Key_F2);
    EXPECT_FALSE(IsOpen());
}

TEST_F(Editing, TheFirstClickSelectsTheSecondEdits) {
    Click(CellPoint(2, 0));
    EXPECT_EQ(list->GetFirstSel(), 2);
    EXPECT_FALSE(IsOpen());
    Click(CellPoint(2, 1)); // not an editable column
    EXPECT_FALSE(IsOpen());
    Click(CellPoint(2, 0));
    EXPECT_TRUE(IsOpenAt(2, 0));
    Type("new");
    parent.Take();
    Click(CellPoint(4, 0)); // stores, and selects
    EXPECT_EQ(parent.Take(), (Asked{"store 0 new", "closed"}));
    EXPECT_EQ(Cell(2, 0), "new");
    EXPECT_EQ(list->GetFirstSel(), 4);
    EXPECT_FALSE(IsOpen());
    DoubleClick(CellPoint(3, 2));
    EXPECT_TRUE(IsOpenAt(3, 2));
}

TEST_F(Editing, ClicksDoNotEditWhatIsNotToBeEdited) {
    list->SetOnlySel(2);
    list->EnableEditing(FALSE);
    DoubleClick(CellPoint(2, 0));
    EXPECT_FALSE(IsOpen());
    list->EnableEditing(TRUE);
    list->ModifyStyle(WS_TABSTOP, 0);
    DoubleClick(CellPoint(2, 0));
    EXPECT_FALSE(IsOpen());
}

TEST_F(Editing, LeavingTheEditorStores) {
    CEdit other;
    ASSERT_TRUE(
        other.Create(WS_CHILD | WS_VISIBLE | WS_TABSTOP, CRect(10, 270, 100, 290), &parent, 7));
    list->EditColumn(1, 0);
    Type("left");
    parent.Take();
    other.SetFocus();
    Pump();
    EXPECT_EQ(parent.Take(), (Asked{"store 0 left", "closed"}));
    EXPECT_EQ(Cell(1, 0), "left");
    EXPECT_EQ(CWnd::GetFocus(), &other);

    list->EditColumn(1, 0);
    Type("refused");
    parent.onAsked = [](UINT message) { return message == VNM_STOREVALUE; };
    other.SetFocus();
    Pump();
    EXPECT_TRUE(IsOpenAt(1, 0));
    EXPECT_EQ(EditorText(), "refused");
    EXPECT_EQ(CWnd::GetFocus(), list->GetActiveEditor()); // the focus comes back
    parent.onAsked = nullptr;
}

TEST_F(Editing, ScrollingStoresFirst) {
    for (int i = 0; i < 100; ++i)
        list->AddStringItems("more", "", "");
    list->EditColumn(1, 0);
    Type("kept");
    list->SendMessage(WM_VSCROLL, SB_PAGEDOWN, 0);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(Cell(1, 0), "kept");
    EXPECT_GT(list->SendMessage(LB_GETTOPINDEX), 0);
}

TEST_F(Editing, NumbersHaveASpinnerAndTakeDigits) {
    list->EditColumn(0, 2);
    EXPECT_EQ(EditorText(), "10");
    Key(Qt::Key_Up);
    EXPECT_EQ(EditorText(), "11");
    list->GetActiveEditor()->SendMessage(EM_SETSEL, 0, -1);
    Type("1x2y");
    EXPECT_EQ(EditorText(), "12");
    Key(Qt::Key_Return);
    EXPECT_EQ(Cell(0, 2), "12");
}

TEST_F(Editing, PickingFromAList) {
    CStringArray strings;
    strings.Add("Wien");
    strings.Add("Linz");
    list->SetEditorStrings(1, strings);
    list->SetEditorType(1, kEditorPick);
    list->EditColumn(0, 1); // holds "Graz", which is not offered
    EXPECT_EQ(list->GetActiveEditor()->SendMessage(CB_GETCURSEL), CB_ERR);
    list->CellCancel();
    list->EditColumn(1, 1);
    EXPECT_EQ(list->GetActiveEditor()->SendMessage(CB_GETCURSEL), 1);
    Key(Qt::Key_Up);
    Key(Qt::Key_Return);
    EXPECT_EQ(Cell(1, 1), "Wien");

    list->SetEditorType(1, kEditorCombo);
    list->EditColumn(0, 1);
    EXPECT_EQ(EditorText(), "Graz");
    list->GetActiveEditor()->SetWindowText("Salzburg");
    Key(Qt::Key_Return);
    EXPECT_EQ(Cell(0, 1), "Salzburg");
    list->ResetEditorStrings(1);
    list->EditColumn(0, 1);
    EXPECT_EQ(list->GetActiveEditor()->SendMessage(CB_GETCOUNT), 0);
}

TEST_F(Editing, AFileCellKeepsItsNameBesideTheValue) {
    list->SetEditorType(1, kEditorFile);
    list->SetEditDataType(0, 404);
    list->AddFileName(0, "/data/old.bin");
    list->EditColumn(0, 1);
    EXPECT_EQ(EditorText(), "/data/old.bin");
    list->GetActiveEditor()->SetWindowText("/data/new.bin");
    parent.Take();
    Key(Qt::Key_Return);
    EXPECT_STREQ(list->GetFileName(0), "/data/new.bin");
    CString shown("/data/new.bin");
    list->GetDisplayString(shown, 0);
    EXPECT_EQ(Cell(0, 1), std::string(shown)); // the row shows that there is a BLOB
    EXPECT_EQ(parent.Take(), (Asked{"store 1 " + Cell(0, 1), "closed"}));
}

TEST_F(Editing, ZoomAsksUntilTheValueIsTaken) {
    list->SetOnlySel(1);
    Key(Qt::Key_F2, Qt::ShiftModifier);
    EXPECT_EQ(list->zooms, std::vector<std::string>{"1,0:Alpha"});
    EXPECT_EQ(parent.Take(), Asked{}); // given up

    int turns = 0;
    list->zooms.clear();
    list->onZoom = [&](CString& value) {
        value += "!";
        return ++turns < 10 ? IDOK : IDCANCEL;
    };
    LRESULT refusals = 2;
    parent.onAsked = [&](UINT) { return refusals-- > 0 ? 1 : 0; };
    Key(Qt::Key_F2, Qt::ShiftModifier);
    EXPECT_EQ(parent.Take(), (Asked{"store 0 Alpha!", "store 0 Alpha!!", "store 0 Alpha!!!"}));
    EXPECT_EQ(Cell(1, 0), "Alpha!!!");

    parent.onAsked = [](UINT) { return 2; };
    Key(Qt::Key_F2, Qt::ShiftModifier);
    EXPECT_EQ(parent.Take().size(), 1u); // 2 gives up
    EXPECT_EQ(Cell(1, 0), "Alpha!!!");

    parent.onAsked = nullptr;
    list->onZoom = nullptr;
    list->zooms.clear();
    list->EditColumn(3, 2); // an open editor gives its text and closes
    list->GetActiveEditor()->SetWindowText("77");
    Key(Qt::Key_F2, Qt::ShiftModifier);
    EXPECT_EQ(list->zooms, std::vector<std::string>{"3,2:77"});
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(Cell(3, 2), "-5");
}

class Opener : public Interaction {
public:
    int MessageBox(const char* text, const char*, UINT type, UINT help) override {
        box = text;
        icon = type & 0xF0;
        context = help;
        return IDOK;
    }
    int ShellExecute(const char* verb, const char* file, const char*, const char*, int) override {
        opened = std::string(verb != nullptr ? verb : "none") + " " + file;
        return result;
    }
    std::string box, opened;
    UINT icon = 0, context = 0;
    int result = kShellStarted;
};

TEST_F(Editing, ZoomOpensTheFileOfAFileCell) {
    Opener opener;
    const ScopedInteraction scope(opener);
    list->SetEditSubType(1, 2);
    list->SetOnlySel(1);
    Key(Qt::Key_F2, Qt::ShiftModifier);
    EXPECT_EQ(parent.Take(), Asked{"open 0"});
    EXPECT_EQ(opener.icon, static_cast<UINT>(MB_ICONEXCLAMATION)); // no name
    EXPECT_EQ(opener.opened, "");

    list->AddFileName(1, "/data/report.pdf");
    opener.icon = 0;
    Key(Qt::Key_F2, Qt::ShiftModifier);
    EXPECT_EQ(opener.opened, "none /data/report.pdf");
    EXPECT_EQ(opener.icon, 0u);
    EXPECT_TRUE(list->zooms.empty());

    opener.result = kShellFileNotFound;
    Key(Qt::Key_F2, Qt::ShiftModifier);
    EXPECT_EQ(opener.context, 40041u);

    parent.onAsked = [](UINT) { return 1; };
    opener.opened.clear();
    Key(Qt::Key_F2, Qt::ShiftModifier); // the parent deals with it
    EXPECT_EQ(opener.opened, "");
}

TEST_F(Editing, TheNullMarkerByKey) {
    list->EditColumn(1, 0);
    Key(Qt::Key_0, Qt::ControlModifier); // off unless asked for
    EXPECT_NE(EditorText(), "-");
    list->EnableSetNull();
    Key(Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(EditorText(), "-");
}

// --- parents with plans of their own -------------------------------------------------------------

TEST_F(Editing, TheParentStoresAgainWhileItIsAsked) {
    list->EditColumn(1, 0);
    Type("once");
    parent.onAsked = [this](UINT message) -> LRESULT {
        if (message == VNM_STOREVALUE) {
            EXPECT_FALSE(list->CellEnter(TRUE));
            list->StartEditing(0, 2); // not now
        }
        return 0;
    };
    parent.Take();
    EXPECT_TRUE(list->CellEnter(TRUE));
    Pump();
    EXPECT_EQ(parent.Take(), (Asked{"store 0 once", "closed"}));
    EXPECT_EQ(Cell(1, 0), "once");
}

TEST_F(Editing, TheParentClosesTheEditorWhileItIsAsked) {
    list->EditColumn(1, 0);
    Type("gone");
    parent.onAsked = [this](UINT message) -> LRESULT {
        if (message == VNM_STOREVALUE)
            list->CellCancel();
        return 0;
    };
    EXPECT_TRUE(list->CellEnter(TRUE));
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(Cell(1, 0), "Alpha");
    EXPECT_FALSE(list->m_bCommitting);
}

TEST_F(Editing, TheParentRemovesRowsWhileItIsAsked) {
    list->EditColumn(2, 0);
    Type("moved");
    parent.onAsked = [this](UINT message) -> LRESULT {
        if (message == VNM_STOREVALUE)
            list->SendMessage(LB_DELETESTRING, 0);
        return 0;
    };
    list->CellEnter(TRUE);
    EXPECT_EQ(Column(0), "Alpha moved bravo echo"); // stored in its own row
    list->EditColumn(2, 0);
    parent.onAsked = [this](UINT message) -> LRESULT {
        if (message == VNM_STOREVALUE)
            list->ResetContent();
        return 0;
    };
    EXPECT_TRUE(list->CellEnter(TRUE));
    EXPECT_EQ(list->GetCount(), 0);
    EXPECT_FALSE(IsOpen());
}

TEST_F(Editing, TheParentDestroysTheListWhileItIsAsked) {
    const std::function<void()> triggers[] = {
        [this] { list->CellEnter(TRUE); }, [this] { Key(Qt::Key_Tab); },
        [this] { Click(CellPoint(3, 0)); }, [this] { list->Sort(0); },
        [this] { list->SendMessage(WM_VSCROLL, SB_LINEDOWN, 0); }};
    for (const bool wholeObject : {false, true})
        for (const auto& act : triggers) {
            SetUp();
            list->EditColumn(1, 0);
            parent.onAsked = [=, this](UINT message) -> LRESULT {
                if (message == VNM_STOREVALUE) {
                    if (wholeObject)
                        delete list.release();
                    else
                        list->DestroyWindow();
                }
                return 0;
            };
            TestList* kept = list.get();
            if (wholeObject) { // what is called must not go through the emptied pointer
                Type("x");
                kept->CellEnter(TRUE);
                EXPECT_EQ(list, nullptr);
            } else {
                act();
                EXPECT_EQ(list->GetSafeHwnd(), nullptr);
            }
            parent.onAsked = nullptr;
            Pump();
        }
    SetUp();
    parent.onAsked = [this](UINT message) -> LRESULT {
        if (message == VNM_OPENCELL)
            delete list.release();
        return 0;
    };
    list->StartEditing(1, 0);
    EXPECT_EQ(list, nullptr);
    Pump();
}

TEST_F(Editing, TheParentDeletesTheListOnAKeyOrAClick) {
    for (const bool byKey : {true, false}) {
        SetUp();
        list->EditColumn(1, 0);
        const CPoint elsewhere = CellPoint(3, 0);
        parent.onAsked = [this](UINT message) -> LRESULT {
            if (message == VNM_STOREVALUE)
                delete list.release();
            return 0;
        };
        QWidget* editor = QApplication::focusWidget();
        if (byKey)
            QTest::keyClick(editor, Qt::Key_Return);
        else
            Mouse(*list, QEvent::MouseButtonPress, elsewhere);
        Pump();
        EXPECT_EQ(list, nullptr);
        parent.onAsked = nullptr;
    }
}

TEST_F(Editing, RowsComeAndGoUnderAnOpenEditor) {
    list->EditColumn(2, 0);
    Type("typed");
    list->InsertStringItems(0, "first", "", "");
    EXPECT_TRUE(IsOpenAt(3, 0));
    CRect rect;
    list->GetActiveEditor()->GetWindowRect(rect);
    list->ScreenToClient(rect);
    EXPECT_EQ(rect.top, 3 * RowHeight()); // it moved with its row
    list->SendMessage(LB_DELETESTRING, 1);
    EXPECT_TRUE(IsOpenAt(2, 0));
    EXPECT_EQ(EditorText(), "typed");
    list->SendMessage(LB_DELETESTRING, 2); // its own row
    EXPECT_FALSE(IsOpen());
    list->EditColumn(1, 0);
    list->ResetContent();
    EXPECT_FALSE(IsOpen());
    Pump();
    EXPECT_EQ(CWnd::GetFocus(), list.get());
    list->StartEditing(0, 0);
    EXPECT_FALSE(IsOpen());
}

TEST_F(Editing, TheListEndsWithAnOpenEditor) {
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

TEST_F(Editing, CellsOutsideOfTheWindow) {
    for (int i = 0; i < 50; ++i)
        list->AddStringItems("more", "", "");
    list->SetColumnWidth(0, 500); // with a scroll bar the next column is out of sight
    list->ModifyStyle(0, WS_VSCROLL);
    list->EditColumn(1, 2);
    EXPECT_FALSE(IsOpen());
    list->EditColumn(1, 0);
    ASSERT_TRUE(IsOpen());
    CRect editor, client;
    list->GetActiveEditor()->GetWindowRect(editor);
    list->GetClientRect(client);
    EXPECT_EQ(editor.Width(), client.Width());
    list->EditColumn(40, 0); // scrolled into view
    EXPECT_TRUE(IsOpenAt(40, 0));
    list->StartEditing(-1, 0);
    list->StartEditing(0, 99);
    EXPECT_TRUE(IsOpenAt(40, 0));
}

// --- files dropped -------------------------------------------------------------------------------

TEST_F(Editing, AFileIsDroppedOnACell) {
    ASSERT_TRUE(list->CreateHeadingsControl(1001));
    list->SetEditorType(1, kEditorFile);
    list->SetDragDrop(2, TRUE);
    CStringArray files;
    files.Add("/data/picture.png");
    files.Add("/data/second.png");
    COleDataObject data(files);
    CListDropTarget& target = list->m_DropTarget;
    EXPECT_EQ(target.OnDragEnter(list.get(), &data, 0, CellPoint(1, 1)), DROPEFFECT_NONE);
    EXPECT_EQ(list->GetFirstSel(), 1); // it shows where it is
    EXPECT_EQ(target.OnDragOver(list.get(), &data, 0, CellPoint(2, 1)), DROPEFFECT_MOVE);
    EXPECT_EQ(list->GetFirstSel(), 2);
    EXPECT_EQ(list->GetSelColumn(), 1);
    EXPECT_EQ(target.OnDragOver(list.get(), &data, 0, {350, 10}), DROPEFFECT_NONE); // no column
    EXPECT_TRUE(target.OnDrop(list.get(), &data, DROPEFFECT_MOVE, CellPoint(2, 1)));
    EXPECT_STREQ(list->GetFileName(2), "/data/picture.png");
    EXPECT_TRUE(IsOpenAt(2, 1));
    EXPECT_EQ(EditorText(), "/data/picture.png");

    COleDataObject nothing((CStringArray()));
    EXPECT_EQ(target.OnDragEnter(list.get(), &nothing, 0, CellPoint(2, 1)), DROPEFFECT_NONE);
    EXPECT_FALSE(target.OnDrop(list.get(), &nothing, DROPEFFECT_MOVE, CellPoint(2, 1)));
    files.SetSize(1);
    files[0] = "/tmp"; // a folder is a name like any other
    COleDataObject folder(files);
    EXPECT_EQ(target.OnDragEnter(list.get(), &folder, 0, CellPoint(2, 1)), DROPEFFECT_MOVE);
    EXPECT_TRUE(target.OnDrop(list.get(), &folder, DROPEFFECT_MOVE, CellPoint(2, 1)));
    EXPECT_STREQ(list->GetFileName(2), "/tmp");
}

} // namespace
} // namespace vnbytstr::test
