#include "vnquery/window/GlobalsDialog.h"

#include "vnquery/window/Commands.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Profile.h"
#include "vnbytstr/window/Static.h"

#include <algorithm>

namespace vnquery {

namespace {

enum Id : int {
    kIdPlace = 1001, ///< where the list goes
    kIdList,
    kIdHeadings,
    kIdKeep,
    kIdAdd,
    kIdDelete,
    kIdName,
    kIdValue,
};

constexpr UINT kOptionsRoot = 3;
constexpr int kBuiltIns = 60; ///< entries that are not the user's, including the unnamed first one

/// Why a name cannot be added.
UINT ComplaintOf(int status) {
    switch (status) {
    case CGlobalVars::ReservedPrefix:
        return IDS_VQ_G_RESERVED;
    case CGlobalVars::Duplicate:
        return IDS_VQ_G_DUPLICATE;
    case CGlobalVars::EmptyName:
        return IDS_VQ_G_EMPTY;
    default:
        return IDS_VQ_G_CHARACTER;
    }
}

std::string MeaningOf(const std::string& name) {
    CString text;
    const CGlobalVars::GlobalVarIDs id = CGlobalVars::GetIDFromName(name.c_str());
    return CGlobalVars::GetDescriptionFromID(id, text) == CGlobalVars::Success ? ToString(text)
                                                                               : Text(IDS_VQ_G_OWN);
}

bool AreOwnKept() { return VNGetProfileDWORD(kOptionsRoot, "Options", "SaveGlobals", 0) != 0; }

/// Whether some values exist only here, since saving failed: reading must not replace them.
bool hasUnsaved = false;

/// Reads the table again. Values that are in no profile are kept: those that the program sets, and
/// the user's variables if they are not saved.
void ReadSaved() {
    if (hasUnsaved)
        return;
    CGlobalVars& globals = GetGlobals();
    const int first = AreOwnKept() ? 1 : kBuiltIns;
    std::vector<std::pair<CString, CString>> own;
    std::vector<std::pair<CString, CString>> programs;
    CString name;
    CString value;
    for (int i = 1; i < globals.GetSize(); ++i) {
        globals.GetGlobalVariable(i, name, value);
        if (i >= kBuiltIns) {
            if (first == kBuiltIns)
                own.emplace_back(name, value);
        } else if (!VNIsProfileValue(kOptionsRoot, "Global Variables", name)) {
            programs.emplace_back(name, value);
        }
    }
    globals.Initialize();
    for (const auto& [variable, text] : programs)
        globals.SetGlobalVarValue(&variable, &text);
    for (const auto& [variable, text] : own) {
        int added = 0;
        globals.AddGlobalVariable(&variable, &text, added);
        globals.SetGlobalVarValue(&variable, &text); // unchanged, even a single apostrophe
    }
}

} // namespace

BEGIN_MESSAGE_MAP(GlobalsDialog, CDialog)
ON_COMMAND(kIdAdd, OnAdd)
ON_COMMAND(kIdDelete, OnDelete)
ON_MESSAGE(VNM_STOREVALUE, OnStoreValue)
ON_MESSAGE(VNM_EDITORCLOSED, OnEditorClosed)
END_MESSAGE_MAP()

GlobalsDialog::GlobalsDialog(CWnd* parent)
    : TextDialog(IDS_VQ_G_TITLE, 400, 260, kHelpSettings, parent), m_list(m_rows) {
    AddControl("STATIC", Text(IDS_VQ_G_HINT), 0xFFFF, SS_NOPREFIX, 7, 7, 386, 9);
    AddControl("STATIC", "", kIdPlace, 0, 7, 34, 386, 178); // below its headings
    AddCheck(kIdKeep, IDS_VQ_G_KEEP, 7, 218, 386);
    AddButton(kIdAdd, IDS_VQ_G_ADD, 7, 239);
    AddButton(kIdDelete, IDS_VQ_G_DELETE, 65, 239);
    AddOkCancel(IDS_VQ_OK);
}

GlobalsDialog::~GlobalsDialog() = default;

void GlobalsDialog::ReadVariables() {
    ReadSaved();
    m_rows.clear();
    for (int i = 0; i < GetGlobals().GetSize(); ++i) {
        CString name;
        CString value;
        if (GetGlobals().GetGlobalVariable(i, name, value) != CGlobalVars::Success ||
            name.IsEmpty())
            continue;
        GlobalsRow row;
        row.name = ToString(name);
        row.value = ToString(value);
        row.isOwn = i >= kBuiltIns;
        row.meaning = row.isOwn ? Text(IDS_VQ_G_OWN) : MeaningOf(row.name);
        row.kind = row.isOwn ? VariableKind() : FindVariableKind(row.name, row.value);
        m_rows.push_back(std::move(row));
    }
}

BOOL GlobalsDialog::OnInitDialog() {
    ReadVariables();
    CWnd* const place = GetDlgItem(kIdPlace);
    CRect rect;
    place->GetWindowRect(rect);
    ScreenToClient(rect);
    place->ShowWindow(SW_HIDE);
    m_list.CreateList(this, rect, kIdList, kIdHeadings);
    m_list.SetRightAligned(LayoutStyle() != 0);
    m_list.ShowRows(0);
    m_list.PositionHeadings();
    CheckDlgButton(kIdKeep, AreOwnKept());
    m_list.SetFocus();
    return FALSE;
}

LRESULT GlobalsDialog::OnStoreValue(WPARAM, LPARAM value) {
    const int selected = m_list.GetFirstSel();
    if (selected < 0 || selected >= static_cast<int>(m_rows.size()))
        return 0;
    GlobalsRow& row = m_rows[static_cast<std::size_t>(selected)];
    const std::string text = GlobalsList::ValueOfDisplay(row, reinterpret_cast<const char*>(value));
    const CString name(row.name.c_str());
    const CString wanted(text.c_str());
    if (!row.isOwn && GetGlobals().Validate(&name, &wanted, nullptr) != CGlobalVars::Success) {
        ShowMessage(Text(IDS_VQ_G_BAD_VALUE, {row.name, text}));
        return 1;
    }
    row.isChanged = row.isChanged || row.value != text;
    row.value = text;
    return 0;
}

LRESULT GlobalsDialog::OnEditorClosed(WPARAM, LPARAM) {
    const int selected = m_list.GetFirstSel();
    if (selected >= 0 && selected < static_cast<int>(m_rows.size()) && !m_list.GetActiveEditor())
        m_list.UpdateStringItem(
            selected, GlobalsList::kValueColumn,
            GlobalsList::DisplayValue(m_rows[static_cast<std::size_t>(selected)]).c_str());
    return 0;
}

void GlobalsDialog::OnAdd() {
    if (!m_list.CellEnter(TRUE))
        return;
    NewVariableDialog dialog(this);
    if (dialog.DoModal() != IDOK)
        return;
    GlobalsRow row{dialog.GetName(), dialog.GetValue(), Text(IDS_VQ_G_OWN), {}, true, true};
    const auto same = std::ranges::find(m_rows, row.name, &GlobalsRow::name);
    if (same != m_rows.end()) { // added before in this dialog
        ShowMessage(Text(IDS_VQ_G_DUPLICATE, {row.name}));
        return;
    }
    std::erase(m_deleted, row.name);
    m_rows.push_back(std::move(row));
    m_list.ShowRows(static_cast<int>(m_rows.size()) - 1);
    m_list.SetFocus();
}

void GlobalsDialog::OnDelete() {
    const int selected = m_list.GetFirstSel();
    if (selected < 0)
        return;
    m_list.CellCancel();
    const auto row = m_rows.begin() + selected;
    if (!row->isOwn) {
        ShowMessage(Text(IDS_VQ_G_BUILT_IN, {row->name}));
        return;
    }
    m_deleted.push_back(row->name);
    m_rows.erase(row);
    m_list.ShowRows(std::min(selected, static_cast<int>(m_rows.size()) - 1));
    m_list.SetFocus();
}

bool GlobalsDialog::HasChanges() const {
    return !m_deleted.empty() || std::ranges::any_of(m_rows, &GlobalsRow::isChanged) ||
           (IsDlgButtonChecked(kIdKeep) != 0) != AreOwnKept();
}

bool GlobalsDialog::ApplyChanges() {
    ReadSaved();
    CGlobalVars& globals = GetGlobals();
    for (const std::string& name : m_deleted) {
        const CString variable(name.c_str());
        globals.DeleteGlobalVariable(&variable, 0, 1);
    }
    for (const GlobalsRow& row : m_rows) {
        if (!row.isChanged)
            continue;
        const CString name(row.name.c_str());
        const CString value(row.value.c_str());
        int added = 0;
        if (row.isOwn)
            globals.AddGlobalVariable(&name, &value, added);
        if (!added)
            globals.SetGlobalVarValue(&name, &value);
    }
    const bool keep = IsDlgButtonChecked(kIdKeep) != 0;
    const bool isKept = AreOwnKept() == keep ||
                        VNWriteProfileDWORD(kOptionsRoot, "Options", "SaveGlobals", keep ? 1 : 0);
    hasUnsaved = globals.SaveToRegistry() != CGlobalVars::Success;
    return !hasUnsaved && isKept;
}

void GlobalsDialog::OnOK() {
    if (!m_list.CellEnter(TRUE))
        return;
    if (HasChanges() && !ApplyChanges())
        ShowMessage(Text(IDS_VQ_G_NOT_SAVED) + SettingsTrouble());
    CDialog::OnOK();
}

void GlobalsDialog::OnCancel() {
    m_list.CellCancel();
    CDialog::OnCancel();
}

// --- a new variable ------------------------------------------------------------------------------

NewVariableDialog::NewVariableDialog(CWnd* parent)
    : TextDialog(IDS_VQ_G_NEW_TITLE, 220, 66, kHelpSettings, parent) {
    AddLabel(IDS_VQ_G_NEW_NAME, 7, 9, 60);
    AddEdit(kIdName, 70, 7, 143);
    AddLabel(IDS_VQ_G_NEW_VALUE, 7, 26, 60);
    AddEdit(kIdValue, 70, 24, 143);
    AddOkCancel(IDS_VQ_OK);
}

void NewVariableDialog::OnOK() {
    CString name(GetItemText(*this, kIdName).c_str());
    name.MakeUpper();
    m_name = ToString(name);
    m_value = GetItemText(*this, kIdValue);
    const CString value(m_value.c_str());
    int added = 0;
    constexpr int kCheckOnly = 1;
    const int status = GetGlobals().AddGlobalVariable(&name, &value, added, kCheckOnly);
    if (status != CGlobalVars::Success) {
        ShowMessage(Text(ComplaintOf(status), {m_name}));
        GotoDlgCtrl(GetDlgItem(kIdName));
        return;
    }
    CDialog::OnOK();
}

} // namespace vnquery
