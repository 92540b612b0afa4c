// The zoom dialog and Shift+F2, the browse button, and the choice of a language.
#include "tests/lists/ListFixture.h"

#include "vnbytstr/Interaction.h"
#include "vnbytstr/Language.h"

#include <QTimer>

namespace vnbytstr::test {
namespace {

class Dialogs : public ListFixture {
protected:
    /// Runs `act` in the dialog's own message loop.
    static int Run(CZoomDialog& dialog, std::function<void(QWidget*)> act) {
        QTimer::singleShot(100, [act = std::move(act), &dialog] {
            if (QWidget* widget = dialog.GetWidget(); widget != nullptr)
                act(widget);
        });
        return dialog.DoModal();
    }
    static CWnd* Edit(CZoomDialog& dialog) { return dialog.GetDlgItem(100); }
};

TEST_F(Dialogs, ZoomReturnsTheChangedText) {
    CZoomDialog dialog("two\r\nlines", "City", &parent);
    const int answer = Run(dialog, [&](QWidget* widget) {
        EXPECT_NE(widget->windowTitle().indexOf("City"), -1);
        CString text;
        Edit(dialog)->GetWindowText(text);
        EXPECT_STREQ(text, "two\r\nlines");
        Edit(dialog)->SetWindowText("three\r\nmore\r\nlines");
        Key(Qt::Key_Return, Qt::ControlModifier);
    });
    EXPECT_EQ(answer, IDOK);
    EXPECT_STREQ(dialog.GetValue(), "three\r\nmore\r\nlines");
}

TEST_F(Dialogs, AFirstKeyInTheZoomReplacesNothing) {
    CZoomDialog dialog("value", nullptr, &parent);
    EXPECT_EQ(Run(dialog,
                  [&](QWidget*) {
                      Type("my ");
                      Key(Qt::Key_Return, Qt::ControlModifier);
                  }),
              IDOK);
    EXPECT_STREQ(dialog.GetValue(), "my value");
}

TEST_F(Dialogs, ACancelledZoomChangesNothing) {
    CZoomDialog dialog("value", nullptr, &parent);
    EXPECT_EQ(Run(dialog,
                  [&](QWidget*) {
                      Edit(dialog)->SetWindowText("other");
                      Key(Qt::Key_Escape);
                  }),
              IDCANCEL);
    EXPECT_STREQ(dialog.GetValue(), "value");
}

TEST_F(Dialogs, ZoomOnAHugeValueOnlyShows) {
    const CString huge = CString("first\r\n") + CString('x', CZoomDialog::kMaxBytes);
    CZoomDialog dialog(huge, nullptr, &parent);
    EXPECT_FALSE(dialog.CanChange());
    EXPECT_EQ(Run(dialog,
                  [&](QWidget*) {
                      EXPECT_EQ(Edit(dialog)->GetWindowTextLength(), 7 + CZoomDialog::kMaxLine);
                      dialog.PostMessage(WM_COMMAND, IDOK);
                      Key(Qt::Key_Return, Qt::ControlModifier); // no OK
                      Key(Qt::Key_Escape);
                  }),
              IDCANCEL);
    EXPECT_EQ(dialog.GetValue().GetLength(), huge.GetLength());
}

TEST_F(Editing, ZoomAsksUntilTheValueIsTaken) {
    list->SetOnlySel(1);
    Key(Qt::Key_F2, Qt::ShiftModifier);
    EXPECT_EQ(list->zooms, std::vector<std::string>{"1,0:Alpha"});
    EXPECT_EQ(parent.Take(), Asked{}); // cancelled

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
    EXPECT_NE(opener.box.find("No such file or directory"), std::string::npos) << opener.box;

    parent.onAsked = [](UINT) { return 1; };
    opener.opened.clear();
    Key(Qt::Key_F2, Qt::ShiftModifier); // the parent deals with it
    EXPECT_EQ(opener.opened, "");
}

class FixedBrowser : public CBrowser {
public:
    BOOL Browse(CWnd*, CString& name) override {
        asked = name;
        name = "/chosen";
        return found;
    }
    CString asked;
    BOOL found = TRUE;
};

TEST_F(Dialogs, TheBrowseButtonPutsANameIn) {
    CEditEx edit;
    ASSERT_TRUE(edit.Create(WS_CHILD | WS_VISIBLE, CRect(10, 270, 110, 290), &parent, 50));
    EXPECT_FALSE(edit.Browse());
    FixedBrowser browser;
    edit.SetType(CEditEx::kBrowse);
    ASSERT_TRUE(edit.CreateBrowseButton(&browser, 51));
    CRect rect;
    edit.GetWindowRect(rect);
    EXPECT_EQ(rect.Width(), 80); // the button has its height for its width
    edit.SetWindowText("/before");
    EXPECT_TRUE(edit.Browse());
    EXPECT_STREQ(browser.asked, "/before");
    CString text;
    edit.GetWindowText(text);
    EXPECT_STREQ(text, "/chosen");
    browser.found = FALSE;
    EXPECT_FALSE(edit.Browse());
    EXPECT_TRUE(edit.IsPart(parent.GetDlgItem(51)));
    edit.DestroyWindow();
    EXPECT_EQ(parent.GetDlgItem(51), nullptr);
}

TEST_F(Dialogs, LanguagesThatAreInstalledCanBeChosen) {
    CComboBox combo;
    ASSERT_TRUE(combo.Create(WS_CHILD | WS_VISIBLE | CBS_DROPDOWNLIST | CBS_SORT,
                             CRect(10, 270, 200, 400), &parent, 60));
    EXPECT_TRUE(GetUILanguageOfCombo(combo).IsEmpty());
    FillUILanguageCombo(combo, "nosuch");
    EXPECT_EQ(combo.GetCount(), 0);
    FillUILanguageCombo(combo, "vnurc");
    ASSERT_GE(combo.GetCount(), 2);
    EXPECT_GE(combo.GetCurSel(), 0);
    for (int item = 0; item < combo.GetCount(); ++item) {
        combo.SetCurSel(item);
        CString name;
        combo.GetLBText(item, name);
        EXPECT_EQ(name, GetLanguageNameFromCode(GetUILanguageOfCombo(combo)));
    }
}

} // namespace
} // namespace vnbytstr::test
