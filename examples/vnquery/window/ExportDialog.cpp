#include "vnquery/window/ExportDialog.h"

#include "vnquery/window/Commands.h"

#include "vnbytstr/Ccsid.h"
#include "vnbytstr/window/ComboBox.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>

namespace vnquery {

namespace {

enum Id : int {
    kIdFile = 1001,
    kIdBrowse,
    kIdCcsid,
    kIdLength,
    kIdBreak,
    kIdEnds,
    kIdSeparator,
    kIdBlobs,
    kIdNull,
    kIdHeadings,
    kIdEntities,
    kIdStrict,
};

constexpr int kMaxRecord = 1 << 24;
constexpr UINT kFirstCcsid = IDS_VQ_CCSID_1208;
constexpr UINT kLastCcsid = IDS_VQ_CCSID_943;
constexpr WORD kUtf8 = 1208;
/// The choices of the combo boxes, in their order.
constexpr LineBreak kBreaks[] = {LineBreak::Lf, LineBreak::CrLf, LineBreak::Cr, LineBreak::None};
constexpr LineEnds kEnds[] = {LineEnds::Escape, LineEnds::Records, LineEnds::Space, LineEnds::Keep};

/// The number that a text begins with; nothing without one, or when it does not fit.
template <class Number>
std::optional<Number> LeadingNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWord = end == text.data() + text.size() || *end == ' ';
    return error == std::errc() && isWord ? std::optional<Number>(number) : std::nullopt;
}

template <class Choices, class Choice>
int IndexOf(const Choices& choices, Choice choice) {
    return static_cast<int>(std::ranges::find(choices, choice) - std::begin(choices));
}

} // namespace

BEGIN_MESSAGE_MAP(ExportDialog, CDialog)
ON_COMMAND(kIdBrowse, OnBrowse)
END_MESSAGE_MAP()

ExportDialog::ExportDialog(CWnd* parent)
    : TextDialog(IDS_VQ_X_TITLE, 330, 206, kHelpExport, parent) {
    constexpr int kLabel = 110;
    constexpr int kField = 122;
    constexpr int kWidth = 201;
    int y = 7;
    AddLabel(IDS_VQ_X_FILE, 7, y + 2, kLabel);
    AddEdit(kIdFile, kField, y, kWidth - 62);
    AddButton(kIdBrowse, IDS_VQ_BROWSE, kField + kWidth - 58, y - 1, 58);
    const auto row = [&](UINT text) {
        y += 17;
        AddLabel(text, 7, y + 2, kLabel);
        return y;
    };
    AddCombo(kIdCcsid, kField, row(IDS_VQ_X_CCSID), kWidth, CBS_DROPDOWN, 120);
    AddEdit(kIdLength, kField, row(IDS_VQ_X_LENGTH), 60);
    AddCombo(kIdBreak, kField, row(IDS_VQ_X_BREAK), kWidth, CBS_DROPDOWNLIST);
    AddCombo(kIdEnds, kField, row(IDS_VQ_X_ENDS), kWidth, CBS_DROPDOWNLIST);
    AddCombo(kIdSeparator, kField, row(IDS_VQ_X_SEPARATOR), kWidth, CBS_DROPDOWN);
    AddCombo(kIdBlobs, kField, row(IDS_VQ_X_BLOBS), kWidth, CBS_DROPDOWNLIST);
    AddEdit(kIdNull, kField, row(IDS_VQ_X_NULL), 60);
    AddCheck(kIdHeadings, IDS_VQ_X_HEADINGS, 7, y + 18, 316);
    AddCheck(kIdEntities, IDS_VQ_X_ENTITIES, 7, y + 31, 316);
    AddCheck(kIdStrict, IDS_VQ_X_STRICT, 7, y + 44, 316);
    AddOkCancel(IDS_VQ_X_EXPORT);
}

void ExportDialog::Fill(int id, std::initializer_list<UINT> texts, int chosen) {
    for (const UINT text : texts)
        SendDlgItemMessage(id, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Text(text).c_str()));
    SendDlgItemMessage(id, CB_SETCURSEL, static_cast<WPARAM>(chosen));
}

int ExportDialog::Chosen(int id) const {
    return std::max(static_cast<int>(SendDlgItemMessage(id, CB_GETCURSEL)), 0);
}

BOOL ExportDialog::OnInitDialog() {
    const WORD ccsid = m_format.ccsid ? m_format.ccsid : kUtf8;
    std::string shown = std::to_string(ccsid);
    for (UINT id = kFirstCcsid; id <= kLastCcsid; ++id) {
        const std::string text = Text(id);
        SendDlgItemMessage(kIdCcsid, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
        if (LeadingNumber<WORD>(text) == ccsid)
            shown = text;
    }
    SetDlgItemText(kIdCcsid, shown.c_str());
    SetDlgItemText(kIdLength, std::to_string(m_format.recordLength).c_str());
    Fill(kIdBreak, {IDS_VQ_X_BREAK_LF, IDS_VQ_X_BREAK_CRLF, IDS_VQ_X_BREAK_CR, IDS_VQ_X_BREAK_NONE},
         IndexOf(kBreaks, m_format.lineBreak));
    Fill(kIdEnds,
         {IDS_VQ_X_ENDS_ESCAPE, IDS_VQ_X_ENDS_RECORDS, IDS_VQ_X_ENDS_SPACE, IDS_VQ_X_ENDS_KEEP},
         IndexOf(kEnds, m_format.lineEnds.value_or(LineEnds::Escape)));
    for (const char* separator : {",", ";", "|"})
        SendDlgItemMessage(kIdSeparator, CB_INSERTSTRING, static_cast<WPARAM>(-1),
                           reinterpret_cast<LPARAM>(separator));
    const std::string tab = Text(IDS_VQ_X_TAB);
    SendDlgItemMessage(kIdSeparator, CB_INSERTSTRING, 0, reinterpret_cast<LPARAM>(tab.c_str()));
    const std::string separator = m_format.separator.value_or("\t");
    SetDlgItemText(kIdSeparator, separator == "\t" ? tab.c_str() : separator.c_str());
    Fill(kIdBlobs, {IDS_VQ_X_BLOBS_PLACEHOLDER, IDS_VQ_X_BLOBS_HEX},
         m_format.hexBlobs.value_or(false) ? 1 : 0);
    SetDlgItemText(kIdNull, m_format.nullText.value_or("").c_str());
    CheckDlgButton(kIdHeadings, m_format.headings.value_or(false));
    CheckDlgButton(kIdEntities, m_format.entities);
    CheckDlgButton(kIdStrict, m_format.strict);
    return CDialog::OnInitDialog();
}

void ExportDialog::OnBrowse() {
    const std::string filter =
        Text(IDS_VQ_TEXT_FILES) + "|*.txt;*.csv;*.tsv|" + Text(IDS_VQ_ALL_FILES) + "|*.*||";
    // Whether to replace a file is asked when the dialog ends, for typed names too.
    CFileDialog dialog(FALSE, "txt", GetItemText(*this, kIdFile).c_str(), OFN_HIDEREADONLY,
                       filter.c_str(), this);
    if (dialog.DoModal() == IDOK)
        SetDlgItemText(kIdFile, dialog.GetPathName());
}

void ExportDialog::Complain(int id, const std::string& text) {
    ShowMessage(text);
    GotoDlgCtrl(GetDlgItem(id));
}

bool ExportDialog::ReadFile() {
    m_file = GetItemText(*this, kIdFile);
    if (m_file.empty()) {
        Complain(kIdFile, Text(IDS_VQ_X_NO_FILE));
        return false;
    }
    std::error_code error;
    return !std::filesystem::is_regular_file(m_file, error) ||
           ShowMessage(Text(IDS_VQ_X_EXISTS, {m_file}), MB_YESNO | MB_ICONQUESTION) == IDYES;
}

bool ExportDialog::ReadCcsid() {
    const std::string text = GetItemText(*this, kIdCcsid);
    const std::optional<WORD> ccsid = LeadingNumber<WORD>(text);
    if (!ccsid || (*ccsid != 0 && !CanTranslateCCSID(GetNativeCCSID(), *ccsid))) {
        Complain(kIdCcsid, ccsid ? Text(IDS_VQ_CL_UNKNOWN_CCSID, {std::to_string(*ccsid)})
                                 : Text(IDS_VQ_X_BAD_CCSID, {text}));
        return false;
    }
    m_format.ccsid = *ccsid == kUtf8 ? WORD{0} : *ccsid;
    return true;
}

bool ExportDialog::ReadLength() {
    const std::string text = GetItemText(*this, kIdLength);
    const std::optional<int> length = LeadingNumber<int>(text);
    if (!length || *length < 0 || *length > kMaxRecord) {
        Complain(kIdLength, Text(IDS_VQ_X_BAD_LENGTH, {text}));
        return false;
    }
    m_format.recordLength = *length;
    return true;
}

void ExportDialog::OnOK() {
    if (!ReadCcsid() || !ReadLength() || !ReadFile())
        return;
    m_format.lineBreak = kBreaks[Chosen(kIdBreak)];
    m_format.lineEnds = kEnds[Chosen(kIdEnds)];
    const std::string separator = GetItemText(*this, kIdSeparator);
    m_format.separator = separator == Text(IDS_VQ_X_TAB) ? "\t" : separator;
    m_format.hexBlobs = Chosen(kIdBlobs) == 1;
    const std::string nullText = GetItemText(*this, kIdNull);
    m_format.nullText = nullText.empty() ? std::nullopt : std::optional(nullText);
    m_format.headings = IsDlgButtonChecked(kIdHeadings) != 0;
    m_format.entities = IsDlgButtonChecked(kIdEntities) != 0;
    m_format.strict = IsDlgButtonChecked(kIdStrict) != 0;
    CDialog::OnOK();
}

} // namespace vnquery
