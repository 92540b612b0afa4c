// Whatever a list tells or asks its parent, the parent may do anything: one table of the messages,
// and of what brings them, times what the parent does.
#include "tests/lists/ListFixture.h"
#include "vnbytstr/ListRowSource.h"

#include <QMessageBox>
#include <QTimer>

namespace vnbytstr::test {
namespace {

class Source : public CListRowSource {
public:
    int GetRowCount() override { return 40; }
    void GetCell(int row, int column, std::string& text) override {
        text = "r" + std::to_string(row) + "c" + std::to_string(column);
    }
    bool SetCell(int, int, std::string_view) override { return true; }
    ESortAnswer SortRows(int, bool) override { return ESortAnswer::Sorted; }
    bool TakesFiles(int) override { return true; }
};

class Parent : public Editing {
protected:
    struct Trigger {
        const char* name;
        UINT message;
        int code; ///< of WM_COMMAND
        bool inSource;
        bool isPaint;
        std::function<void()> prepare; ///< after the list is made
        std::function<void()> act;
    };
    struct Deed {
        const char* name;
        std::function<void()> act;
    };

    void MakeFor(bool withSource, DWORD style = WS_VSCROLL | WS_HSCROLL) {
        list.reset(); // before the source
        Make(style);
        list->SetEditorType(0, kEditorText);
        list->SetEditorType(2, kEditorNumber);
        for (int i = 0; i < 30; ++i)
            list->AddStringItems("more", "", "1");
        ASSERT_TRUE(list->CreateHeadingsControl(1001));
        list->EnableSort();
        list->EnableSideScroll();
        list->SetPrintInput(TRUE);
        for (int row = 0; row < 5; ++row)
            list->SetDragDrop(row, TRUE);
        if (withSource) {
            ASSERT_TRUE(list->SetRowSource(&source));
        }
        if (other.GetSafeHwnd() == nullptr) {
            ASSERT_TRUE(other.Create(WS_CHILD | WS_VISIBLE | WS_TABSTOP, CRect(10, 270, 100, 290),
                                     &parent, 7));
        }
        AfxPumpMessages(0);
    }
    void TearDown() override {
        list.reset();
        ListFixture::TearDown();
    }
    void Open() {
        list->EditColumn(1, 0);
        ASSERT_TRUE(IsOpen());
    }
    void OnStrip(QEvent::Type type, int x) { Mouse(*list->GetHeadings(), type, {x, 8}); }
    static void Press(Qt::Key key, Qt::KeyboardModifiers keys = {}) {
        QTest::keyClick(QApplication::focusWidget(), key, keys);
    }
    void Drag(bool drop) {
        CStringArray files;
        files.Add("/data/x");
        COleDataObject data(files);
        TestList* const kept = list.get();
        CListDropTarget& target = kept->m_DropTarget;
        const CPoint at = CellPoint(3, 0);
        target.OnDragEnter(kept, &data, 0, at);
        if (drop && list != nullptr && list->GetSafeHwnd() != nullptr)
            target.OnDrop(kept, &data, DROPEFFECT_MOVE, at);
    }

    std::vector<Trigger> Triggers();
    std::vector<Deed> Deeds();

    Source source;
    CEdit other;
};

std::vector<Parent::Trigger> Parent::Triggers() {
    constexpr auto kPress = QEvent::MouseButtonPress;
    constexpr auto kRelease = QEvent::MouseButtonRelease;
    const auto open = [this] { Open(); };
    const auto select = [this] { list->SetOnlySel(1); };
    const auto leave = [this] { other.SetFocus(); };
    const auto data = [this] { list->SendMessage(LB_SETITEMDATA, 1, 7); };
    const auto click = [this](int row) {
        const CPoint at = CellPoint(row, 0);
        TestList* const kept = list.get();
        Mouse(*kept, kPress, at);
        if (list != nullptr)
            Mouse(*kept, kRelease, at);
    };
    const UINT store = VNM_STOREVALUE;
    const UINT cell = VNM_OPENCELL;
    return {
        {"enter", store, 0, true, false, open, [] { Press(Qt::Key_Return); }},
        {"tab", store, 0, true, false, open, [] { Press(Qt::Key_Tab); }},
        {"store", store, 0, true, false, open, [this] { list->CellEnter(TRUE); }},
        {"click", store, 0, true, false, open, [click] { click(3); }},
        {"double click", store, 0, true, false, open,
         [this] { Mouse(*list, QEvent::MouseButtonDblClick, CellPoint(3, 0)); }},
        {"right click", store, 0, true, false, open,
         [this] { Mouse(*list, kPress, CellPoint(3, 0), Qt::RightButton); }},
        {"heading", store, 0, true, false, open, [this] { OnStrip(kPress, 40); }},
        {"divider", store, 0, true, false, open, [this] { OnStrip(kPress, 100); }},
        {"divider twice", store, 0, true, false, open,
         [this] { OnStrip(QEvent::MouseButtonDblClick, 100); }},
        {"in a drag", store, 0, true, false,
         [this] {
             OnStrip(kPress, 100);
             Open();
         },
         [this] { OnStrip(QEvent::MouseMove, 130); }},
        {"sort by click", store, 0, true, false,
         [this] {
             list->ModifyStyle(WS_TABSTOP, 0);
             OnStrip(kPress, 40);
             Open();
         },
         [this] { OnStrip(kRelease, 40); }},
        {"sort", store, 0, true, false, open, [this] { list->Sort(0); }},
        {"find", store, 0, true, false, open, [this] { list->FindText("linz"); }},
        {"scroll", store, 0, true, false, open,
         [this] { list->SendMessage(WM_VSCROLL, SB_LINEDOWN, 0); }},
        {"scroll aside", store, 0, true, false, open,
         [this] { list->SendMessage(WM_HSCROLL, SB_LINEDOWN, 0); }},
        {"wheel", store, 0, true, false, open,
         [this] { list->SendMessage(WM_MOUSEWHEEL, MAKEWPARAM(0, -120), 0); }},
        {"drag over", store, 0, true, false, open, [this] { Drag(false); }},
        {"focus", store, 0, true, false, open, leave},
        {"disable", store, 0, true, false, open, [this] { list->EnableWindow(FALSE); }},
        {"zoom", store, 0, true, false,
         [this] {
             list->onZoom = [](CString&) { return IDOK; };
             list->SetOnlySel(1);
         },
         [] { Press(Qt::Key_F2, Qt::ShiftModifier); }},
        {"edit", cell, 0, true, false, nullptr, [this] { list->EditColumn(1, 0); }},
        {"edit by F2", cell, 0, true, false, select, [] { Press(Qt::Key_F2); }},
        {"edit by click", cell, 0, true, false, select, [click] { click(1); }},
        {"edit next", cell, 0, true, false, [this] { list->EditColumn(1, 2); },
         [] { Press(Qt::Key_Tab); }},
        {"drop", cell, 0, true, false, nullptr, [this] { Drag(true); }},
        {"editor closes", VNM_EDITORCLOSED, 0, true, false, open, [this] { list->CellCancel(); }},
        {"editor takes the focus", WM_COMMAND, LBN_KILLFOCUS, true, false, nullptr,
         [this] { list->EditColumn(1, 0); }},
        {"list gets the focus back", WM_COMMAND, LBN_SETFOCUS, true, false, open,
         [] { Press(Qt::Key_Escape); }},
        {"editing ends", WM_COMMAND, LBN_SETFOCUS, true, false, open,
         [this] { list->SetNumColumns(2); }},
        {"editor goes with the rows", WM_COMMAND, LBN_SETFOCUS, true, false, open,
         [this] { list->ResetContent(); }},
        {"read-only", WM_COMMAND, LBN_SETFOCUS, true, false, open,
         [this] { list->SetReadOnly(TRUE); }},
        {"heading gives the focus", WM_COMMAND, LBN_SETFOCUS, true, false, leave,
         [this] { OnStrip(kPress, 40); }},
        {"click gives the focus", WM_COMMAND, LBN_SETFOCUS, true, false, leave,
         [click] { click(2); }},
        {"selected", WM_COMMAND, LBN_SELCHANGE, true, false, nullptr, [click] { click(2); }},
        {"selected by key", WM_COMMAND, LBN_SELCHANGE, true, false, nullptr,
         [] { Press(Qt::Key_Down); }},
        {"typed", WM_COMMAND, LBN_SELCHANGE, true, false, nullptr,
         [this] { Press(list->GetRowSource() != nullptr ? Qt::Key_R : Qt::Key_M); }},
        {"found", WM_COMMAND, LBN_SELCHANGE, true, false, nullptr,
         [this] { list->FindText(list->GetRowSource() != nullptr ? "r3" : "linz"); }},
        {"double clicked", WM_COMMAND, LBN_DBLCLK, true, false, nullptr,
         [this] { Mouse(*list, QEvent::MouseButtonDblClick, CellPoint(2, 0)); }},
        {"measured", WM_MEASUREITEM, 0, false, false, nullptr,
         [this] { list->InsertStringItems(1, "a", "b", "c"); }},
        {"added", WM_MEASUREITEM, 0, false, false, nullptr,
         [this] { list->AddStringItems("a", "b", "c"); }},
        {"rows come", WM_MEASUREITEM, 0, false, false, [this] { list->ResetContent(); },
         [this] { list->SetRowSource(&source); }},
        {"deleted", WM_DELETEITEM, 0, false, false, data,
         [this] { list->SendMessage(LB_DELETESTRING, 1); }},
        {"emptied", WM_DELETEITEM, 0, false, false, data, [this] { list->ResetContent(); }},
        {"drawn", WM_DRAWITEM, 0, true, true, nullptr, [this] { list->Invalidate(); }},
        {"coloured", WM_CTLCOLORLISTBOX, 0, true, true, nullptr, [this] { list->Invalidate(); }},
    };
}

std::vector<Parent::Deed> Parent::Deeds() {
    return {
        {"destroys the window", [this] { list->DestroyWindow(); }},
        {"deletes the list", [this] { delete list.release(); }},
        {"deletes all",
         [this] {
             delete list.release();
             parent.DestroyWindow();
         }},
        {"takes the columns", [this] { list->SetNumColumns(0); }},
        {"makes other columns", [this] { list->SetNumColumns(1); }},
        {"selects another row", [this] { list->SetOnlySel(4); }},
        {"takes the rows", [this] { list->ResetContent(); }},
        {"takes the source", [this] { list->SetRowSource(nullptr); }},
        {"closes the editor", [this] { list->CellCancel(); }},
        {"edits another cell", [this] { list->EditColumn(3, 2); }},
        {"disables the list", [this] { list->EnableWindow(FALSE); }},
        {"makes the headings anew", [this] { list->CreateHeadingsControl(1002); }},
        {"shows a message",
         [] {
             QTimer::singleShot(0, [] {
                 if (QWidget* box = QApplication::activeModalWidget(); box != nullptr)
                     box->close();
             });
             AfxMessageBox("text");
         }},
    };
}

TEST_F(Parent, DoesAnythingWhenItIsToldOrAsked) {
    for (const bool withSource : {false, true})
        for (const Trigger& trigger : Triggers())
            for (const Deed& deed : Deeds()) {
                if (withSource && !trigger.inSource)
                    continue;
                const std::string name = deed.name;
                if (trigger.isPaint && (name == "shows a message" || name == "edits another cell"))
                    continue; // not while painting
                SCOPED_TRACE(std::string(trigger.name) + ": " + name +
                             (withSource ? " (source)" : ""));
                MakeFor(withSource);
                if (trigger.prepare)
                    trigger.prepare();
                parent.Take();
                bool acted = false;
                parent.onMessage = [&](UINT message, WPARAM wParam) {
                    if (acted || message != trigger.message || list == nullptr ||
                        list->GetSafeHwnd() == nullptr ||
                        (message == WM_COMMAND && HIWORD(wParam) != trigger.code))
                        return;
                    if (message == WM_COMMAND && LOWORD(wParam) != 1000)
                        return;
                    acted = true;
                    deed.act();
                };
                trigger.act();
                AfxPumpMessages(0);
                if (trigger.isPaint || trigger.message == VNM_EDITORCLOSED)
                    Pump();
                parent.onMessage = nullptr;
                EXPECT_TRUE(acted);
                EXPECT_FALSE(list != nullptr && list->m_bCommitting);
                // Nothing is left behind that the next moves of the pointer would meet.
                if (parent.GetSafeHwnd() != nullptr)
                    Mouse(parent, QEvent::MouseMove, {50, 100});
                ReleaseCapture();
                ClipCursor(nullptr);
                AfxPumpMessages(0);
                if (HasFailure())
                    return;
            }
}

} // namespace
} // namespace vnbytstr::test
