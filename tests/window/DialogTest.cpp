#include "tests/window/ControlHost.h"

#include "src/charset/CodePage.h"
#include "vnbytstr/framework/MessageBoxTypes.h"
#include "vnbytstr/window/Button.h"
#include "vnbytstr/window/Dialog.h"
#include "vnbytstr/window/Edit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace {

using testing::ElementsAre;

enum Ids : UINT { kName = 101, kNotes, kRed, kGreen, kBlue, kCheck };

const CDialogTemplate::Item kItems[] = {
    {"STATIC", "&Name:", 0xFFFF, 0, 7, 9, 40, 8},
    {"EDIT", "", kName, ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP, 50, 7, 120, 14},
    {"EDIT", "", kNotes, ES_MULTILINE | ES_WANTRETURN | WS_BORDER | WS_TABSTOP, 50, 24, 120, 30},
    {"BUTTON", "&Red", kRed, BS_AUTORADIOBUTTON | WS_GROUP | WS_TABSTOP, 7, 60, 40, 10},
    {"BUTTON", "&Green", kGreen, BS_AUTORADIOBUTTON | WS_TABSTOP, 50, 60, 40, 10},
    {"BUTTON", "&Blue", kBlue, BS_AUTORADIOBUTTON | WS_TABSTOP, 90, 60, 40, 10},
    {"BUTTON", "&Keep", kCheck, BS_AUTOCHECKBOX | WS_GROUP | WS_TABSTOP, 7, 75, 40, 10},
    {"BUTTON", "OK", IDOK, BS_DEFPUSHBUTTON | WS_TABSTOP, 65, 90, 50, 14},
    {"BUTTON", "Cancel", IDCANCEL, WS_TABSTOP, 120, 90, 50, 14},
};
const CDialogTemplate kTemplate = {"Title", 177, 110, kItems};

/// Does what it is told once it is up.
class ScriptedDialog : public CDialog {
public:
    explicit ScriptedDialog(std::function<void(ScriptedDialog&)> script, CWnd* parent = nullptr)
        : CDialog(kTemplate, parent), m_script(std::move(script)) {}
    BOOL OnInitDialog() override {
        m_inits++;
        CheckRadioButton(kRed, kBlue, kGreen);
        DoLater([this] {
            Activate(*this);
            m_script(*this);
        });
        return CDialog::OnInitDialog();
    }
    void OnOK() override {
        CString name;
        GetDlgItemText(kName, name);
        m_name = name;
        CDialog::OnOK();
    }
    static UINT Focus() {
        const CWnd* const focus = GetFocus();
        return focus != nullptr ? static_cast<UINT>(focus->GetDlgCtrlID()) : 0;
    }
    std::function<void(ScriptedDialog&)> m_script;
    std::string m_name;
    int m_inits = 0;
};

TEST(Dialog, EnterTakesTheDefaultButtonAndEscapeCancels) {
    ControlHost host;
    bool blocked = false;
    ScriptedDialog first([&](ScriptedDialog& dialog) {
        EXPECT_EQ(ScriptedDialog::Focus(), kName);
        Type("me");
        CRect rect;
        host.GetClientRect(rect);
        blocked = QApplication::activeModalWidget() == dialog.GetWidget();
        PressKey(Qt::Key_Return);
    });
    EXPECT_EQ(first.DoModal(), IDOK);
    EXPECT_EQ(first.m_name, "me");
    EXPECT_TRUE(blocked);
    EXPECT_EQ(first.m_hWnd, nullptr);
    EXPECT_EQ(first.DoModal(), IDOK); // a dialog may be run again
    EXPECT_EQ(first.m_inits, 2);
    ScriptedDialog second([](ScriptedDialog&) { PressKey(Qt::Key_Escape); }, &host);
    EXPECT_EQ(second.DoModal(), IDCANCEL);
    ScriptedDialog closed([](ScriptedDialog& dialog) { dialog.GetWidget()->close(); }, &host);
    EXPECT_EQ(closed.DoModal(), IDCANCEL);
    ScriptedDialog ended([](ScriptedDialog& dialog) { dialog.EndDialog(42); }, &host);
    EXPECT_EQ(ended.DoModal(), 42);
    ScriptedDialog destroyed([](ScriptedDialog& dialog) { dialog.DestroyWindow(); }, &host);
    EXPECT_EQ(destroyed.DoModal(), IDABORT);
}

TEST(Dialog, TabArrowsAndLetters) {
    std::vector<UINT> way;
    ScriptedDialog dialog([&](ScriptedDialog& self) {
        for (int i = 0; i < 7; ++i) {
            way.push_back(ScriptedDialog::Focus());
            PressKey(Qt::Key_Tab);
        }
        PressKey(Qt::Key_Tab, Qt::ShiftModifier);
        EXPECT_EQ(ScriptedDialog::Focus(), kName);
        PressKey(Qt::Key_Tab, Qt::ShiftModifier);
        EXPECT_EQ(ScriptedDialog::Focus(), static_cast<UINT>(IDCANCEL));
        self.GotoDlgCtrl(self.GetDlgItem(kGreen));
        PressKey(Qt::Key_Right);
        EXPECT_EQ(self.GetCheckedRadioButton(kRed, kBlue), static_cast<int>(kBlue));
        PressKey(Qt::Key_Down); // round within the group
        EXPECT_EQ(self.GetCheckedRadioButton(kRed, kBlue), static_cast<int>(kRed));
        Type("k"); // a letter alone does where no text goes in
        EXPECT_EQ(self.IsDlgButtonChecked(kCheck), static_cast<UINT>(BST_CHECKED));
        EXPECT_EQ(ScriptedDialog::Focus(), kCheck);
        PressKey(Qt::Key_N, Qt::AltModifier);
        EXPECT_EQ(ScriptedDialog::Focus(), kName);
        Type("k");
        EXPECT_EQ(self.IsDlgButtonChecked(kCheck), static_cast<UINT>(BST_CHECKED));
        PressKey(Qt::Key_Tab);
        PressKey(Qt::Key_Return); // ES_WANTRETURN keeps it
        EXPECT_EQ(TextOf(*self.GetDlgItem(kNotes)), "\r\n");
        const vnbytstr::ScopedCodePage utf8(65001); // where a Hebrew letter has two bytes
        self.SetDlgItemText(kCheck, "&\u05D4\u05D3");
        const auto he = [](Qt::KeyboardModifiers keys) {
            QTest::sendKeyEvent(QTest::Click, QApplication::focusWindow(), Qt::Key(0x05D4),
                                QStringLiteral(u"\u05D4"), keys);
        };
        self.GotoDlgCtrl(self.GetDlgItem(kRed));
        he(Qt::NoModifier);
        EXPECT_EQ(self.IsDlgButtonChecked(kCheck), static_cast<UINT>(BST_UNCHECKED));
        he(Qt::AltModifier);
        EXPECT_TRUE(QTest::qWaitFor([&] { return self.IsDlgButtonChecked(kCheck) != 0; }));
        self.GotoDlgCtrl(self.GetDlgItem(IDCANCEL));
        PressKey(Qt::Key_Return); // a button with the focus is pressed instead of the default one
    });
    EXPECT_EQ(dialog.DoModal(), IDCANCEL);
    EXPECT_THAT(way, ElementsAre(kName, kNotes, kGreen, kCheck, static_cast<UINT>(IDOK),
                                 static_cast<UINT>(IDCANCEL), kName));
}

TEST(Dialog, WithoutWaiting) {
    ControlHost host;
    CDialog dialog;
    CDialogTemplate description = kTemplate;
    description.style |= WS_VISIBLE;
    ASSERT_TRUE(dialog.CreateIndirect(description, &host));
    EXPECT_TRUE(dialog.IsWindowVisible());
    EXPECT_EQ(LOWORD(dialog.GetDefID()), IDOK);
    dialog.SetDefID(IDCANCEL);
    EXPECT_EQ(dialog.GetDlgItem(IDOK)->GetStyle() & BS_TYPEMASK, BS_PUSHBUTTON);
    // Sizes follow the font: four units are an average character wide, eight a line high.
    CRect units(0, 0, 4, 8);
    dialog.MapDialogRect(units);
    CRect client;
    dialog.GetClientRect(client);
    EXPECT_NEAR(client.Width(), units.right * 177.0 / 4, 2);
    EXPECT_NEAR(client.Height(), units.bottom * 110.0 / 8, 2);
    dialog.GetDlgItem(IDOK)->SendMessage(BM_CLICK);
    EXPECT_FALSE(dialog.IsWindowVisible());
    EXPECT_NE(dialog.m_hWnd, nullptr);
    const CDialogTemplate::Item unknown[] = {{"NO SUCH CLASS", "", 1, 0, 0, 0, 1, 1}};
    CDialog broken({"x", 10, 10, unknown}, &host);
    EXPECT_EQ(broken.DoModal(), -1);
    EXPECT_EQ(CDialog().DoModal(), -1);
}

} // namespace
