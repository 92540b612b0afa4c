// The zoom dialog, the browse button, and the choice of a language.
#include "tests/lists/ListFixture.h"

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

TEST_F(Dialogs, ZoomGivesTheChangedTextBack) {
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

TEST_F(Dialogs, ZoomGivenUpChangesNothing) {
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
    const CString huge = CString("first\r\n") + CString('x', CZoomDialog::kMostBytes);
    CZoomDialog dialog(huge, nullptr, &parent);
    EXPECT_FALSE(dialog.CanChange());
    EXPECT_EQ(Run(dialog,
                  [&](QWidget*) {
                      EXPECT_EQ(Edit(dialog)->GetWindowTextLength(), 7 + CZoomDialog::kLongestLine);
                      dialog.PostMessage(WM_COMMAND, IDOK);
                      Key(Qt::Key_Return, Qt::ControlModifier); // no OK
                      Key(Qt::Key_Escape);
                  }),
              IDCANCEL);
    EXPECT_EQ(dialog.GetValue().GetLength(), huge.GetLength());
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
