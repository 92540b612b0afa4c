// The dialogs: values, export, global variables, language.
#include "tests/vnquery/window/WindowRun.h"

#include "examples/vnquery/window/Commands.h"
#include "examples/vnquery/window/ExportDialog.h"
#include "examples/vnquery/window/GlobalsDialog.h"
#include "examples/vnquery/window/LanguageDialog.h"
#include "examples/vnquery/window/VariableKind.h"
#include "examples/vnquery/window/WindowText.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/Profile.h"

#include <QBuffer>
#include <QImage>

#include <unistd.h>

#include <filesystem>

namespace vnquery::test {
namespace {

std::string PngBytes() {
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes.toStdString();
}

std::string Hex(const std::string& bytes) {
    return QByteArray::fromStdString(bytes).toHex().toStdString();
}

/// The child whose class and, if given, text fit.
CWnd* FindChild(CWnd& dialog, const std::string& className, const std::string& part = {}) {
    for (CWnd* child = dialog.GetWindow(GW_CHILD); child; child = child->GetWindow(GW_HWNDNEXT)) {
        char name[64] = "";
        GetClassName(*child, name, sizeof name);
        if (className == name && child->IsWindowVisible() &&
            GetText(*child).find(part) != std::string::npos)
            return child;
    }
    return nullptr;
}

void Press(CWnd& dialog, int id) { dialog.SendMessage(WM_COMMAND, static_cast<WPARAM>(id)); }

class WindowDialogs : public WindowTest {
protected:
    void OpenValues() {
        MakeDatabase("create table v(id integer primary key, b blob, t text);"
                     "insert into v values (1, x'" +
                     Hex(PngBytes()) +
                     "', 'one' || char(10) || 'two'), (2, zeroblob(100000), 'x')");
        Open("select b, t from v");
    }
};

TEST_F(WindowDialogs, PicturesAndBytesAreShown) {
    OpenValues();
    List().SetCurrentCell(0, 0);
    WithDialog([&] { View().Zoom(); },
               [&](CWnd& dialog) {
                   EXPECT_NE(FindChild(dialog, "STATIC", "PNG picture, 40 x 30"), nullptr);
                   Press(dialog, IDCANCEL);
               });
    List().SetCurrentCell(1, 0);
    WithDialog([&] { View().Zoom(); },
               [&](CWnd& dialog) {
                   CWnd* const bytes = FindChild(dialog, "EDIT", "000010");
                   ASSERT_NE(bytes, nullptr);
                   EXPECT_EQ(GetText(*bytes).substr(0, 12), "000000  00 0");
                   EXPECT_NE(FindChild(dialog, "STATIC", "of 100,000"), nullptr);
                   CWnd* const next = FindChild(dialog, "BUTTON", "Ne&xt");
                   ASSERT_NE(next, nullptr);
                   Press(dialog, next->GetDlgCtrlID());
                   EXPECT_EQ(GetText(*bytes).substr(0, 7), "008000 ");
                   Press(dialog, IDCANCEL);
               });
}

TEST_F(WindowDialogs, ATextIsEditedInTheZoom) {
    OpenValues();
    List().SetCurrentCell(0, 1);
    WithDialog([&] { Key(Qt::Key_F2, Qt::ShiftModifier); },
               [&](CWnd& dialog) {
                   CWnd* const text = FindChild(dialog, "EDIT", "one");
                   ASSERT_NE(text, nullptr);
                   text->SetFocus();
                   text->SendMessage(EM_SETSEL, 0, 3);
                   Type("ONE");
                   Press(dialog, IDOK);
               });
    EXPECT_EQ(Cell(0, 1), "ONE\\ntwo");
    m_answers.m_answers = {IDYES};
    View().WriteChanges();
    EXPECT_EQ(Ask("select hex(t) from v where id = 1"), "4F4E450A74776F");
}

TEST_F(WindowDialogs, TheExportIsWrittenAsAsked) {
    OpenValues();
    const std::string file = File("out.txt");
    WithDialog([&] { View().Export(); },
               [&](CWnd& dialog) {
                   CWnd* const name = dialog.GetDlgItem(1001); // the file, the first field
                   m_answers.m_answers = {IDOK};
                   Press(dialog, IDOK); // no file yet
                   ASSERT_NE(name, nullptr);
                   name->SetWindowText(file.c_str());
                   CWnd* const check = FindChild(dialog, "BUTTON", "na&mes");
                   ASSERT_NE(check, nullptr);
                   check->SendMessage(BM_SETCHECK, 1);
                   Press(dialog, IDOK);
               });
    EXPECT_EQ(m_files.Read("out.txt").substr(0, 4), "b\tt\n");
    EXPECT_NE(m_files.Read("out.txt").find("one\\ntwo"), std::string::npos);
    EXPECT_EQ(Status().substr(0, 15), "Exported 2 rows");
}

TEST_F(WindowDialogs, KindsOfVariablesAreThoseOfTheirValidation) {
    EXPECT_EQ(FindVariableKind("TLXEC_SHARE", "1").form, VariableKind::Form::Switch);
    EXPECT_EQ(FindVariableKind("TLXDC_CURRENCY", "").form, VariableKind::Form::Text);
    EXPECT_EQ(FindVariableKind("TLXAO_NUM_FETCHED", "0").form, VariableKind::Form::ReadOnly);
    const VariableKind copies = FindVariableKind("TLXQW_RPT_COPIES", "1");
    EXPECT_EQ(copies.form, VariableKind::Form::Number);
    EXPECT_LE(copies.minimum, 1);
    EXPECT_GE(copies.maximum, 2);
    for (const long edge : {copies.minimum - 1, copies.maximum + 1}) {
        const CString name("TLXQW_RPT_COPIES");
        const CString value(std::to_string(edge).c_str());
        EXPECT_NE(GetGlobals().Validate(&name, &value, nullptr), CGlobalVars::Success) << edge;
    }
}

TEST_F(WindowDialogs, GlobalVariablesAreEditedByTheirKind) {
    MakeDatabase("create table t(v)");
    Open();
    GlobalsDialog dialog(&Window());
    WithDialog([&] { dialog.DoModal(); },
               [&](CWnd& window) {
                   auto* const list = dynamic_cast<CListBoxEx*>(FindChild(window, "LISTBOX"));
                   ASSERT_NE(list, nullptr);
                   const auto rowOf = [&](const char* name) {
                       CString text;
                       for (int row = 0; row < list->GetCount(); ++row)
                           if (list->GetStringItem(row, 0, text) && text == name)
                               return row;
                       return -1;
                   };
                   const int shown = rowOf("TLXCP_TENULL");
                   list->SendMessage(LB_SETTOPINDEX, static_cast<WPARAM>(shown));
                   CRect row;
                   list->SendMessage(LB_GETITEMRECT, static_cast<WPARAM>(shown),
                                     reinterpret_cast<LPARAM>(&row));
                   const LPARAM value = MAKELPARAM(list->GetColumnWidth(0) + 8, row.top + 4);
                   for (const UINT click : {WM_LBUTTONDOWN, WM_LBUTTONDOWN, WM_LBUTTONDBLCLK}) {
                       list->SendMessage(click, MK_LBUTTON, value);
                       list->SendMessage(WM_LBUTTONUP, 0, value);
                       EXPECT_EQ(list->GetFirstSel(), shown);
                       EXPECT_EQ(list->GetActiveEditor() != nullptr, click == WM_LBUTTONDBLCLK);
                   }
                   list->CellCancel();
                   list->EditColumn(rowOf("TLXQW_STRIP_SPACE"), 1);
                   ASSERT_NE(list->GetActiveEditor(), nullptr);
                   list->GetActiveEditor()->SendMessage(CB_SETCURSEL, 0);
                   EXPECT_TRUE(list->CellEnter(TRUE));
                   list->EditColumn(rowOf("TLXCP_TENULL"), 1);
                   ASSERT_NE(list->GetActiveEditor(), nullptr);
                   list->GetActiveEditor()->SetWindowText("");
                   m_answers.m_answers = {IDOK};
                   EXPECT_FALSE(list->CellEnter(TRUE));
                   list->GetActiveEditor()->SetWindowText("NULL");
                   EXPECT_TRUE(list->CellEnter(TRUE));
                   list->EditColumn(rowOf("TLXAO_NUM_FETCHED"), 1);
                   EXPECT_EQ(list->GetActiveEditor(), nullptr);
                   Press(window, IDOK);
               });
    EXPECT_EQ(CGlobalVars::Get(CGlobalVars::TLXQW_STRIP_SPACE), "0");
    EXPECT_EQ(CGlobalVars::Get("TLXCP_TENULL"), "NULL");
    EXPECT_EQ(VNGetProfileString(3, "Global Variables", "TLXCP_TENULL", ""), "NULL");
    RunQuery("select null");
    View().SetSql("");
}

/// What another program has saved is shown, not overwritten; what no profile has stays.
TEST_F(WindowDialogs, GlobalVariablesAreReadAnewAndSavedAfterAChangeOnly) {
    MakeDatabase("create table t(v)");
    Open("select 1 union select 2");
    const auto saved = [](const char* name) {
        return ToString(VNGetProfileString(3, "Global Variables", name, "none"));
    };
    const auto elsewhere = [](const char* name, const char* value) {
        ASSERT_TRUE(VNWriteProfileString(3, "Global Variables", name, value));
    };
    VNWriteProfileDWORD(3, "Options", "SaveGlobals", 0);
    GetGlobals().Initialize();
    const CString own("MINE");
    const CString value("here only");
    int added = 0;
    GetGlobals().AddGlobalVariable(&own, &value, added);
    const CString fetched("7");
    GetGlobals().SetGlobalVarValue(CGlobalVars::TLXAO_NUM_FETCHED, &fetched);
    elsewhere("TLXCP_TENULL", "theirs");
    const auto rows = [](CWnd& window) {
        return dynamic_cast<CListBoxEx*>(FindChild(window, "LISTBOX"));
    };
    const auto valueOf = [](CListBoxEx& list, const char* name, bool edit, const char* text = "") {
        CString cell;
        for (int row = 0; row < list.GetCount(); ++row) {
            if (!list.GetStringItem(row, 0, cell) || cell != name)
                continue;
            if (edit) {
                list.EditColumn(row, 1);
                list.GetActiveEditor()->SetWindowText(text);
                list.CellEnter(TRUE);
            }
            list.GetStringItem(row, 1, cell);
            return ToString(cell);
        }
        return std::string("missing");
    };
    for (const bool change : {false, true}) {
        GlobalsDialog dialog(&Window());
        WithDialog([&] { dialog.DoModal(); },
                   [&](CWnd& window) {
                       CListBoxEx* const list = rows(window);
                       ASSERT_NE(list, nullptr);
                       EXPECT_EQ(valueOf(*list, "TLXCP_TENULL", false), "theirs");
                       EXPECT_EQ(valueOf(*list, "MINE", false), "here only");
                       EXPECT_EQ(valueOf(*list, "TLXAO_NUM_FETCHED", false), "7");
                       if (change)
                           valueOf(*list, "TLXDC_CURRENCY", true, "EUR");
                       elsewhere("TLXCP_TEDFLT", change ? "later" : "soon"); // while it is open
                       Press(window, IDOK);
                   });
        EXPECT_EQ(saved("TLXDC_CURRENCY"), change ? "EUR" : "none");
        EXPECT_EQ(saved("TLXCP_TEDFLT"), change ? "later" : "soon");
        EXPECT_EQ(saved("TLXCP_TENULL"), "theirs");
    }
    VNWriteProfileString(3, "Global Variables", nullptr, nullptr);
    GetGlobals().Initialize();
}

TEST_F(WindowDialogs, TheWindowSaysWhySettingsAreNotSaved) {
    MakeDatabase("create table t(v)");
    Open();
    std::filesystem::create_directory(File("no-profile.ini")); // neither read nor written
    ::usleep(20000);                                           // more than a tick
    m_answers.m_answers = {IDOK};
    GlobalsDialog dialog(&Window());
    WithDialog([&] { dialog.DoModal(); },
               [&](CWnd& window) {
                   dynamic_cast<CDialog&>(window).CheckDlgButton(1004,
                                                                 1); // keep the user's variables
                   Press(window, IDOK);
               });
    ASSERT_EQ(m_answers.m_texts.size(), 1u);
    EXPECT_NE(m_answers.m_texts[0].find("no-profile.ini"), std::string::npos);
    EXPECT_NE(m_answers.m_texts[0].find("not a plain file"), std::string::npos);
    std::filesystem::remove(File("no-profile.ini"));
    EXPECT_TRUE(VNWriteProfileString(3, "Options", "Other", "1"));
    EXPECT_EQ(SettingsTrouble(), "");
}

TEST_F(WindowDialogs, AnotherLanguageChangesEveryText) {
    MakeDatabase("create table t(v)");
    Open();
    ASSERT_TRUE(VNWriteProfileString(3, "Options", "UILanguage", "DEU"));
    LoadTexts();
    View().Relabel();
    EXPECT_FALSE(ResourcesAreEnglish()); // the library's own texts
    EXPECT_EQ(Text(IDS_VQ_W_RUN), "A&usf\xC3\xBChren");
    EXPECT_EQ(GetText(*View().GetDlgItem(kCmdRun)), Text(IDS_VQ_W_RUN));
    VNWriteProfileString(3, "Options", "UILanguage", nullptr);
    LoadTexts();
}

} // namespace
} // namespace vnquery::test
