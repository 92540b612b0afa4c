// Opening, storing and leaving cell editors.
#include "tests/lists/ListFixture.h"

#include <map>
#include <sstream>

namespace vnbytstr::test {
namespace {

std::string ClassOf(const CWnd* window) {
    char name[64] = "";
    GetClassName(window->GetSafeHwnd(), name, sizeof name);
    return name;
}

class EditingSteps : public Editing {
protected:
    /// Runs steps such as "edit 1 0; type new; enter". Returns what the parent was asked, the open
    /// cell with its text, the selected row, and the cells that differ from kRows:
    /// "store 0 new, closed | - | 1 | 1,0=new".
    std::string Run(const std::string& script) {
        std::istringstream steps(script);
        for (std::string step; std::getline(steps >> std::ws, step, ';');)
            Step(step);
        Pump();
        std::string outcome;
        for (const std::string& entry : parent.Take())
            outcome += (outcome.empty() ? "" : ", ") + entry;
        const auto cell = [](int row, int column) {
            return std::to_string(row) + "," + std::to_string(column);
        };
        outcome += outcome.empty() ? "| " : " | ";
        outcome += IsOpen() ? cell(list->m_nCurRow, list->m_nCurColumn) + ":" + EditorText() : "-";
        outcome += " | " + std::to_string(list->GetFirstSel()) + " |";
        std::string changes;
        for (int row = 0; row < 5; ++row)
            for (const int column : {0, 2})
                if (column == 0 || list->GetCount() == 5)
                    if (Cell(row, column) != kRows[row][column])
                        changes += " " + cell(row, column) + "=" + Cell(row, column);
        return outcome + (changes.empty() ? " " : changes);
    }

private:
    void Step(const std::string& step) {
        const std::map<std::string, std::pair<Qt::Key, Qt::KeyboardModifiers>> keys = {
            {"enter", {Qt::Key_Return, {}}}, {"escape", {Qt::Key_Escape, {}}},
            {"tab", {Qt::Key_Tab, {}}},      {"backtab", {Qt::Key_Backtab, Qt::ShiftModifier}},
            {"f2", {Qt::Key_F2, {}}},        {"shift+f2", {Qt::Key_F2, Qt::ShiftModifier}},
            {"up", {Qt::Key_Up, {}}},        {"ctrl+0", {Qt::Key_0, Qt::ControlModifier}}};
        const std::map<std::string, std::function<void(int, int)>> actions = {
            {"edit", [this](int a, int b) { list->EditColumn(a, b); }},
            {"store", [this](int, int) { list->CellEnter(FALSE); }},
            {"cancel", [this](int, int) { list->CellCancel(); }},
            {"stop", [this](int, int) { list->StopEditing(); }},
            {"click", [this](int a, int b) { Click(CellPoint(a, b)); }},
            {"dclick", [this](int a, int b) { DoubleClick(CellPoint(a, b)); }},
            {"select", [this](int a, int) { list->SetOnlySel(a); }},
            {"scroll", [this](int, int) { list->SendMessage(WM_VSCROLL, SB_LINEDOWN, 0); }},
            {"sort", [this](int a, int) { list->Sort(a); }},
            {"insert", [this](int a, int) { list->InsertStringItems(a, "new", "", ""); }},
            {"delete",
             [this](int a, int) { list->SendMessage(LB_DELETESTRING, static_cast<WPARAM>(a)); }},
            {"editing", [this](int a, int) { list->EnableEditing(a); }},
            {"readonly", [this](int a, int) { list->SetReadOnly(a); }},
            {"null", [this](int a, int) { list->EnableSetNull(a); }},
            {"type-of-0", [this](int a, int) { list->SetEditorType(0, a); }},
            {"tabstop", [this](int, int) { list->ModifyStyle(WS_TABSTOP, 0); }},
            {"enable", [this](int a, int) {
                 list->CWnd::EnableWindow(a);
                 list->SetFocus();
                 Pump();
             }}};
        std::istringstream words(step);
        std::string verb;
        words >> verb;
        if (verb == "type") {
            words >> verb;
            Type(verb.c_str());
        } else if (const auto key = keys.find(verb); key != keys.end()) {
            Key(key->second.first, key->second.second);
        } else {
            int a = -1, b = -1;
            words >> a >> b;
            actions.at(verb)(a, b);
        }
    }
};

TEST_F(Editing, TheParentIsAskedBeforePlainAndFileCells) {
    const struct {
        int type;
        short subtype;
        bool asks;
    } cases[] = {
        {kEditorNone, 1, false},   {kEditorText, 1, true},         {kEditorText, 7, true},
        {kEditorText, 2, true},    {kEditorText, 3, false},        {kEditorFile, 1, true},
        {kEditorFolder, 1, false}, {kEditorNumber, 1, false},      {kEditorCombo, 1, false},
        {kEditorPick, 1, false},   {kEditorSortedCombo, 1, false}, {kEditorSortedPick, 1, false},
    };
    for (const auto& c : cases)
        for (const LRESULT answer : {0, 1}) {
            SCOPED_TRACE(testing::Message() << c.type << '/' << c.subtype << ": " << answer);
            list->SetEditorType(1, c.type);
            list->SetEditSubType(2, c.subtype);
            parent.Take();
            parent.Answer(VNM_OPENCELL, answer);
            list->EditColumn(2, 1);
            EXPECT_EQ(parent.Take(), c.asks ? Asked{"open 1"} : Asked{});
            EXPECT_EQ(IsOpen(), c.type != kEditorNone && !(c.asks && answer != 0));
            EXPECT_EQ(list->GetFirstSel(), 2);
            list->CellCancel();
            Pump();
        }
}

TEST_F(Editing, EachTypeHasItsEditor) {
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
        EXPECT_TRUE(CWnd::GetFocus() == editor || editor->IsChild(CWnd::GetFocus()));
        const CRect rect = EditorRect();
        EXPECT_EQ(rect.TopLeft(), CPoint(100, RowHeight()));
        if (type <= kEditorNumber) {
            EXPECT_EQ(ClassOf(editor), "EDIT");
            const int units = HIWORD(static_cast<DWORD>(GetDialogBaseUnits()));
            EXPECT_EQ(rect.Height(), (units * 10) >> 3);
            EXPECT_EQ(editor->SendMessage(EM_GETLIMITTEXT), 12);
            EXPECT_EQ(type == kEditorText, rect.Width() == 100); // others have a button beside them
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
    list->EditColumn(2, 1); // the first choice becomes the last
    EXPECT_EQ(EditorText(), "Wien");
    list->SetEditorType(1, kEditorPick);
    list->EditColumn(0, 1); // "Graz" is not among the choices
    EXPECT_EQ(list->GetActiveEditor()->SendMessage(CB_GETCURSEL), CB_ERR);
    list->EditColumn(1, 1);
    EXPECT_EQ(list->GetActiveEditor()->SendMessage(CB_GETCURSEL), 3);
    Key(Qt::Key_Up);
    Key(Qt::Key_Return);
    EXPECT_EQ(Cell(1, 1), "Enns");

    list->SetEditorType(1, kEditorCombo);
    list->ResetEditorStrings(1);
    list->EditColumn(0, 1);
    EXPECT_EQ(list->GetActiveEditor()->SendMessage(CB_GETCOUNT), 0);
    EXPECT_EQ(EditorText(), "Graz");
    list->GetActiveEditor()->SetWindowText("Salzburg");
    Key(Qt::Key_Return);
    EXPECT_EQ(Cell(0, 1), "Salzburg");
}

TEST_F(EditingSteps, KeysAndClicks) {
    const struct {
        const char* steps;
        const char* outcome;
    } cases[] = {
        // storing, closing
        {"edit 1 0; type Omega; enter", "open 0, store 0 Omega, closed | - | 1 | 1,0=Omega"},
        {"edit 1 0; type Omega; escape", "open 0, closed | - | 1 |"},
        {"edit 1 0; type Omega; store", "open 0, closed | - | 1 | 1,0=Omega"}, // without asking
        {"cancel; store", "| - | -1 |"},                                       // nothing is open
        {"stop", "closed | - | -1 |"},                                         // posted in any case
        {"edit 1 0; type x; scroll", "open 0, store 0 x, closed | - | 1 | 1,0=x"},
        // Tab goes on to the next editable cell, also of the next row, but not back to a row before
        {"edit 3 0; tab", "open 0, store 0 bravo, closed | 3,2:-5 | 3 |"},
        {"edit 3 2; tab", "store 2 -5, open 0, closed | 4,0:echo | 4 |"},
        {"edit 4 2; tab", "store 2 9, closed | - | 4 |"},
        {"edit 4 2; backtab", "store 2 9, open 0, closed | 4,0:echo | 4 |"},
        {"edit 4 0; backtab", "open 0, store 0 echo, closed | - | 4 |"},
        // F2 opens the first editable cell
        {"f2", "| - | -1 |"},
        {"select 2; f2", "open 0 | 2,0:charlie | 2 |"},
        {"type-of-0 0; select 2; f2", "| 2,2:100 | 2 |"},
        {"editing 0; select 2; f2", "| - | 2 |"},
        // the first click selects, the second edits
        {"click 2 0", "| - | 2 |"},
        {"click 2 0; click 2 1", "| - | 2 |"}, // not an editable column
        {"click 2 0; click 2 0", "open 0 | 2,0:charlie | 2 |"},
        {"dclick 3 2", "| 3,2:-5 | 3 |"},
        {"edit 2 0; type new; click 4 0", "open 0, store 0 new, closed | - | 4 | 2,0=new"},
        {"editing 0; select 2; dclick 2 0", "| - | 2 |"},
        {"tabstop 0; select 2; dclick 2 0", "| - | 2 |"},
        // read-only ends and prevents editing
        {"edit 1 0; readonly 1", "open 0, closed | - | 1 |"},
        {"readonly 1; enable 1; select 1; f2; dclick 1 0", "| - | 1 |"},
        // numbers have a spinner and take digits, signs and markers only
        {"edit 0 2; up", "| 0,2:11 | 0 |"},
        {"edit 0 2; type 200; up", "| 0,2:200 | 0 |"}, // the range's end
        {"edit 0 2; type 1x2y; enter", "store 2 12, closed | - | 0 | 0,2=12"},
        {"edit 0 2; type +", "| 0,2:+ | 0 |"},
        // the null marker by key, off by default
        {"edit 0 2; ctrl+0", "| 0,2:0 | 0 |"},
        {"null 1; edit 0 2; ctrl+0", "| 0,2:- | 0 |"},
        // rows are inserted and deleted under an open editor
        {"edit 2 0; type x; insert 0; delete 2",
         "open 0 | 2,0:x | 2 | 0,0=new 0,2= 1,0=delta 1,2=10"},
        {"edit 2 0; type x; delete 2", "open 0, closed | - | -1 | 2,0=bravo 3,0=echo 4,0="},
    };
    for (const auto& c : cases) {
        SetUp();
        const std::string outcome = Run(c.steps);
        EXPECT_EQ(outcome.substr(0, outcome.find_last_not_of(' ') + 1), c.outcome) << c.steps;
        EXPECT_TRUE(list->zooms.empty()) << c.steps;
    }
}

TEST_F(EditingSteps, ARefusedValueStaysInTheEditor) {
    for (const char* attempt : {"enter", "tab", "click 3 1", "dclick 3 0", "scroll", "sort 0"}) {
        SetUp();
        EditAndType(1, 0, "bad");
        parent.Answer(VNM_STOREVALUE, 1);
        EXPECT_EQ(Run(attempt), "store 0 bad | 1,0:bad | 1 | ") << attempt;
        EXPECT_EQ(Run("escape"), "closed | - | 1 | ");
        EXPECT_EQ(CWnd::GetFocus(), list.get());
    }
}

TEST_F(EditingSteps, LeavingTheEditorStores) {
    CEdit other;
    ASSERT_TRUE(
        other.Create(WS_CHILD | WS_VISIBLE | WS_TABSTOP, CRect(10, 270, 100, 290), &parent, 7));
    for (const LRESULT refusal : {1, 0}) {
        EditAndType(1, 0, "left");
        parent.Answer(VNM_STOREVALUE, refusal);
        other.SetFocus();
        EXPECT_EQ(Run(""), refusal != 0 ? "store 0 left | 1,0:left | 1 | "
                                        : "store 0 left, closed | - | 1 | 1,0=left");
        EXPECT_EQ(CWnd::GetFocus(), refusal != 0 ? list->GetActiveEditor() : &other);
    }
}

TEST_F(Editing, AListThatIsNotEditedShowsItsValues) {
    list->onZoom = [](CString& value) {
        value = "changed";
        return IDOK;
    };
    const std::function<void()> locks[] = {[this] { list->EnableEditing(FALSE); },
                                           [this] {
                                               list->SetReadOnly(TRUE);
                                               list->CWnd::EnableWindow(TRUE);
                                               list->SetFocus();
                                           }};
    for (const auto& lock : locks) {
        SetUp();
        lock();
        list->SetOnlySel(2);
        Key(Qt::Key_F2, Qt::ShiftModifier);
        Click(CellPoint(1, 1));
        Key(Qt::Key_F2, Qt::ShiftModifier); // the cell that was clicked, editable or not
        EXPECT_EQ(list->zooms, (std::vector<std::string>{"2,0:charlie", "1,1:Linz"}));
        EXPECT_EQ(Cell(2, 0), "charlie");
        EXPECT_EQ(parent.Take(), Asked{});
    }
}

TEST_F(Editing, ExtendingTheSelectionOpensNothing) {
    Make(LBS_EXTENDEDSEL);
    list->SetEditorType(0, kEditorText);
    list->SetOnlySel(2);
    Click(CellPoint(2, 0), Qt::LeftButton, Qt::ShiftModifier);
    EXPECT_FALSE(IsOpen());
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
    CRect client;
    list->GetClientRect(client);
    EXPECT_EQ(EditorRect().Width(), client.Width());
    list->EditColumn(40, 0); // scrolled into view
    EXPECT_TRUE(IsOpenAt(40, 0));
    list->StartEditing(-1, 0);
    list->StartEditing(0, 99);
    EXPECT_TRUE(IsOpenAt(40, 0));
}

TEST_F(Editing, AFileCellKeepsItsNameBesideTheValue) {
    list->SetEditorType(1, kEditorFile);
    list->SetEditDataType(0, kDataBlob);
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
    EXPECT_EQ(list->GetFirstSel(), 1); // the selection shows where it is
    EXPECT_EQ(target.OnDragOver(list.get(), &data, 0, CellPoint(2, 1)), DROPEFFECT_MOVE);
    EXPECT_EQ(list->GetFirstSel(), 2);
    EXPECT_EQ(list->GetSelColumn(), 1);
    EXPECT_EQ(target.OnDragOver(list.get(), &data, 0, {350, RowHeight() * 7}),
              DROPEFFECT_NONE); // no row
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

TEST_F(Editing, TheOnlySelectedRowComesIntoView) {
    Make(LBS_EXTENDEDSEL | WS_VSCROLL);
    list->SetEditorType(0, kEditorText);
    for (int i = 0; i < 100; ++i)
        list->AddStringItems("more", "", "");
    list->SetOnlySel(1);
    list->SendMessage(LB_SETTOPINDEX, 90);
    Key(Qt::Key_F2);
    ASSERT_TRUE(IsOpenAt(1, 0));
    EXPECT_GE(EditorRect().top, 0);
}

} // namespace
} // namespace vnbytstr::test
