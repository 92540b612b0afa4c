#include "vnquery/window/ValueDialog.h"

#include "vnbytstr/window/ComboBox.h"
#include "vnbytstr/window/Edit.h"
#include "vnbytstr/window/Static.h"
#include "vnquery/files/ValueLoader.h"
#include "vnquery/files/ValueSaver.h"
#include "vnquery/result/PictureKind.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/window/Commands.h"
#include "vnquery/window/SaveValueAs.h"
#include "vnquery/window/TaskDialog.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace vnquery {

namespace {

enum Id : int {
    kIdAsLabel = 1001,
    kIdAs,
    kIdInfo,
    kIdText,
    kIdBytes,
    kIdPicture,
    kIdPrevious,
    kIdNext,
    kIdPage,
    kIdOffsetLabel,
    kIdOffset,
    kIdLoad,
    kIdSave,
};

constexpr DWORD kLinesPerPage = 2048;
constexpr DWORD kMaxShownText = 65536; ///< of a text that cannot be edited
constexpr int kGap = 8;
constexpr int kMinWidth = 560;
constexpr int kMinHeight = 300;
constexpr DWORD kMaxPictureFile = 1u << 28;

std::optional<DWORD> ParseOffset(std::string text) {
    std::erase_if(text, [](char ch) { return ch == ' ' || ch == ','; });
    std::string_view digits = text;
    const bool isHex = digits.starts_with("0x") || digits.starts_with("0X");
    digits.remove_prefix(isHex ? 2 : 0);
    DWORD number = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), number, isHex ? 16 : 10);
    if (error != std::errc() || end != digits.data() + digits.size())
        return {};
    return number;
}

/// The beginning of a text that cannot be edited, with its line breaks; control characters are made
/// visible.
std::string VisibleText(const Value& value) {
    std::string text;
    value.ForEachPiece([&](std::span<const BYTE> piece) {
        const std::size_t room = kMaxShownText - std::min<std::size_t>(kMaxShownText, text.size());
        text.append(reinterpret_cast<const char*>(piece.data()), std::min(room, piece.size()));
    });
    std::string shown;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t length = std::min(rest.find('\n'), rest.size());
        std::string_view line = rest.substr(0, length);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        shown += MakeVisible(line);
        if (length < rest.size())
            shown += "\r\n";
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    return shown;
}

} // namespace

BEGIN_MESSAGE_MAP(ValueDialog, CDialog)
ON_WM_SIZE()
ON_WM_GETMINMAXINFO()
ON_CONTROL(CBN_SELCHANGE, kIdAs, OnViewChosen)
ON_COMMAND(kIdPrevious, OnPrevious)
ON_COMMAND(kIdNext, OnNext)
ON_COMMAND(kIdLoad, OnLoad)
ON_COMMAND(kIdSave, OnSave)
END_MESSAGE_MAP()

ValueDialog::ValueDialog(const ValueSubject& subject, CWnd* parent)
    : TextDialog(0, 400, 240, kHelpValues, parent), m_subject(subject) {
    SetTitle(Text(IDS_VQ_V_TITLE, {MakeVisible(subject.column), std::to_string(subject.row + 1)}));
    MakeSizable();
    AddMultilineEdit(kIdText, 7, 24, 386, 176);
    AddMultilineEdit(kIdBytes, 7, 24, 386, 176, ES_READONLY);
    AddControl("STATIC", "", kIdPicture, SS_BITMAP | SS_CENTERIMAGE, 7, 24, 386, 176);
    AddLabel(IDS_VQ_V_AS, 7, 9, 50, kIdAsLabel);
    AddCombo(kIdAs, 60, 7, 80, CBS_DROPDOWNLIST);
    AddLabel(0, 150, 9, 243, kIdInfo);
    AddButton(kIdPrevious, IDS_VQ_V_PREVIOUS, 7, 204);
    AddButton(kIdNext, IDS_VQ_V_NEXT, 65, 204);
    AddLabel(IDS_VQ_V_OFFSET, 130, 206, 40, kIdOffsetLabel);
    AddEdit(kIdOffset, 172, 204, 60);
    AddLabel(0, 240, 206, 150, kIdPage);
    AddButton(kIdLoad, IDS_VQ_V_LOAD, 7, 222);
    AddButton(kIdSave, IDS_VQ_V_SAVE, 65, 222);
    AddOkCancel(IDS_VQ_OK);
}

BOOL ValueDialog::OnInitDialog() {
    m_fixedFont.CreatePointFont(100, "Monospace");
    GetDlgItem(kIdBytes)->SetFont(&m_fixedFont);
    GetDlgItem(kIdLoad)->EnableWindow(m_subject.isEditable);
    CRect button;
    GetDlgItem(IDOK)->GetWindowRect(button);
    m_buttonWidth = button.Width();
    m_buttonHeight = button.Height();
    m_isReady = true;
    ShowValue();
    CDialog::OnInitDialog();
    FocusView();
    return FALSE; // the focus is set
}

/// Selects nothing, so that a repeated key does not replace the text.
void ValueDialog::FocusView() {
    CWnd* const view = GetDlgItem(m_view == View::Picture ? kIdAs
                                  : m_view == View::Bytes ? kIdBytes
                                                          : kIdText);
    view->SetFocus();
    if (m_view != View::Picture)
        view->SendMessage(EM_SETSEL, 0, 0);
}

void ValueDialog::SetInfo(const std::string& text) { SetDlgItemText(kIdInfo, text.c_str()); }

/// Shows the present value: offers the views that it has, and chooses the best.
void ValueDialog::ShowValue() {
    const Value& value = Shown();
    const bool isBytes = value.GetType() == Value::Type::Binary;
    m_views.clear();
    if (RecognisePicture(value) != PictureKind::None)
        m_views.push_back(View::Picture);
    if (!isBytes)
        m_views.push_back(View::Text);
    m_views.push_back(View::Bytes);
    SendDlgItemMessage(kIdAs, CB_RESETCONTENT);
    for (const View view : m_views) {
        const UINT text = view == View::Text    ? IDS_VQ_V_TEXT
                          : view == View::Bytes ? IDS_VQ_V_HEX
                                                : IDS_VQ_V_PICTURE;
        SendDlgItemMessage(kIdAs, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Text(text).c_str()));
    }
    SendDlgItemMessage(kIdAs, CB_SETCURSEL, 0);
    ShowText();
    ShowBytes(0);
    if (m_views.front() == View::Picture)
        ShowPicture();
    ShowView(m_views.front());
}

void ValueDialog::ShowText() {
    const Value& value = Shown();
    const bool isField = IsEditableInField(value);
    m_original = isField ? value.GetBytes() : std::string();
    GetDlgItem(kIdText)->SetWindowText(
        (isField ? ToFieldText(m_original) : VisibleText(value)).c_str());
    GetDlgItem(kIdText)->SendMessage(EM_SETREADONLY, !isField || !m_subject.isEditable);
    GetDlgItem(kIdText)->SendMessage(EM_SETMODIFY, FALSE);
}

void ValueDialog::ShowBytes(DWORD firstLine) {
    const HexDump dump(Shown());
    m_firstLine = firstLine;
    GetDlgItem(kIdBytes)->SetWindowText(dump.GetLines(firstLine, kLinesPerPage).c_str());
    const DWORD length = Shown().GetLength();
    const DWORD lines = dump.GetLineCount();
    const ULONGLONG end = std::min<ULONGLONG>(length, (ULONGLONG{firstLine} + kLinesPerPage) *
                                                          HexDump::kBytesPerLine);
    const std::string page =
        Text(IDS_VQ_V_PAGE, {GroupDigits(length ? firstLine * HexDump::kBytesPerLine + 1ull : 0),
                             GroupDigits(end), GroupDigits(length)});
    SetDlgItemText(kIdPage, page.c_str());
    GetDlgItem(kIdPrevious)->EnableWindow(firstLine > 0);
    GetDlgItem(kIdNext)->EnableWindow(lines > kLinesPerPage && firstLine < lines - kLinesPerPage);
}

void ValueDialog::ShowPicture() {
    const Value& value = Shown();
    m_picture.DeleteObject();
    if (value.GetLength() <= kMaxPictureFile) {
        const std::string bytes = value.GetBytes();
        m_picture.LoadFromMemory(std::as_bytes(std::span(bytes)));
    }
    SendDlgItemMessage(kIdPicture, STM_SETIMAGE, IMAGE_BITMAP,
                       reinterpret_cast<LPARAM>(m_picture.GetSafeHandle()));
}

void ValueDialog::ShowView(View view) {
    const Value& value = Shown();
    const bool isBytes = view == View::Bytes;
    m_view = view;
    GetDlgItem(kIdText)->ShowWindow(view == View::Text ? SW_SHOW : SW_HIDE);
    GetDlgItem(kIdBytes)->ShowWindow(isBytes ? SW_SHOW : SW_HIDE);
    GetDlgItem(kIdPicture)->ShowWindow(view == View::Picture ? SW_SHOW : SW_HIDE);
    for (const int id : {kIdPrevious, kIdNext, kIdPage, kIdOffsetLabel, kIdOffset})
        GetDlgItem(id)->ShowWindow(isBytes ? SW_SHOW : SW_HIDE);

    const std::string size = FormatSize(value.GetLength());
    if (m_subject.isDefault && !m_loaded) {
        SetInfo(Text(IDS_VQ_V_DEFAULT_INFO));
    } else if (value.IsNull()) {
        SetInfo(Text(IDS_VQ_V_NULL_INFO));
    } else if (view == View::Picture) {
        const CSize pixels = m_picture.GetBitmapSize();
        const std::string kind = PictureName(RecognisePicture(value));
        SetInfo(pixels.cx == 0 ? Text(IDS_VQ_V_BAD_PICTURE, {kind})
                               : Text(IDS_VQ_V_PICTURE_INFO, {kind, std::to_string(pixels.cx),
                                                              std::to_string(pixels.cy), size}));
    } else if (value.GetType() == Value::Type::Number) {
        SetInfo(Text(IDS_VQ_V_NUMBER_INFO));
    } else if (value.GetType() == Value::Type::Binary) {
        SetInfo(Text(IDS_VQ_V_BYTES_INFO, {size}));
    } else if (!IsEditableInField(value) && value.GetLength() > kMaxShownText) {
        SetInfo(Text(IDS_VQ_V_CUT, {size, FormatSize(kMaxShownText)}));
    } else {
        SetInfo(Text(IDS_VQ_V_TEXT_INFO, {size}));
    }
    Layout();
}

void ValueDialog::OnViewChosen() {
    const auto chosen = SendDlgItemMessage(kIdAs, CB_GETCURSEL);
    if (chosen < 0 || chosen >= static_cast<LRESULT>(m_views.size()))
        return;
    ShowView(m_views[static_cast<std::size_t>(chosen)]);
}

void ValueDialog::OnPrevious() { ShowBytes(m_firstLine - std::min(m_firstLine, kLinesPerPage)); }

void ValueDialog::OnNext() { ShowBytes(m_firstLine + kLinesPerPage); }

void ValueDialog::OnGoTo() {
    const std::string text = GetItemText(*this, kIdOffset);
    const std::optional<DWORD> offset = ParseOffset(text);
    const DWORD length = Shown().GetLength();
    if (!offset || *offset >= length) {
        ShowMessage(Text(IDS_VQ_V_BAD_OFFSET, {text, std::to_string(length ? length - 1 : 0)}));
        GotoDlgCtrl(GetDlgItem(kIdOffset));
        return;
    }
    // Pages begin at multiples of their length.
    const DWORD line = *offset / HexDump::kBytesPerLine;
    ShowBytes(line - line % kLinesPerPage);
    CWnd* const bytes = GetDlgItem(kIdBytes);
    const auto begin = bytes->SendMessage(EM_LINEINDEX, line % kLinesPerPage);
    const auto end = begin + static_cast<LRESULT>(HexDump(Shown()).GetLine(line).size());
    bytes->SetFocus();
    bytes->SendMessage(EM_SETSEL, static_cast<WPARAM>(begin), end);
    bytes->SendMessage(EM_SCROLLCARET);
}

BOOL ValueDialog::PreTranslateMessage(MSG* message) {
    if (message->message == WM_KEYDOWN && message->wParam == VK_RETURN) {
        CWnd* const offset = GetDlgItem(kIdOffset);
        if (GetKeyState(VK_CONTROL) < 0) {
            OnOK();
            return TRUE;
        }
        if (CWnd::GetFocus() == offset) {
            OnGoTo();
            return TRUE;
        }
    }
    return TextDialog::PreTranslateMessage(message);
}

void ValueDialog::OnLoad() {
    const std::string filter = Text(IDS_VQ_ALL_FILES) + "|*.*|" + Text(IDS_VQ_PICTURE_FILES) +
                               "|*.png;*.jpg;*.jpeg;*.gif;*.bmp|" + Text(IDS_VQ_TEXT_FILES) +
                               "|*.txt||";
    CFileDialog dialog(TRUE, nullptr, nullptr, OFN_HIDEREADONLY | OFN_FILEMUSTEXIST, filter.c_str(),
                       this);
    if (dialog.DoModal() != IDOK)
        return;
    const std::string file = ToString(dialog.GetPathName());
    Value loaded;
    if (!RunTask(this, IDS_VQ_T_LOADING, [&](Progress& progress) {
            loaded = LoadValue(file, m_subject.kind, m_subject.column, progress);
        }))
        return;
    m_loaded = std::move(loaded);
    ShowValue();
}

void ValueDialog::OnSave() {
    const Value& value = Shown();
    if (value.IsNull()) {
        ShowMessage(Text(IDS_VQ_E_NULL_VALUE));
        return;
    }
    SaveValueAs(this, value, m_subject.cell);
}

bool ValueDialog::IsTextEdited() const {
    return GetDlgItem(kIdText)->SendMessage(EM_GETMODIFY) != 0;
}

void ValueDialog::OnOK() {
    if (IsTextEdited()) {
        NewValue value;
        const std::string text = FromFieldText(GetItemText(*this, kIdText), m_original);
        if (ParseText(text, m_subject.kind, value) == EditFault::NotANumber) {
            ShowMessage(Text(IDS_VQ_E_NOT_A_NUMBER, {m_subject.column, "42", "-", "+"}));
            GotoDlgCtrl(GetDlgItem(kIdText));
            return;
        }
        m_newValue = std::move(value);
    } else if (m_loaded) {
        m_newValue.emplace();
        m_newValue->value = std::move(*m_loaded);
    }
    CDialog::OnOK();
}

// --- layout --------------------------------------------------------------------------------------

void ValueDialog::OnSize(UINT type, int cx, int cy) {
    CDialog::OnSize(type, cx, cy);
    Layout();
}

void ValueDialog::OnGetMinMaxInfo(MINMAXINFO* info) {
    info->ptMinTrackSize = {kMinWidth, kMinHeight};
}

void ValueDialog::Place(int id, int left, int top, int width, int height) {
    GetDlgItem(id)->MoveWindow(left, top, std::max(width, 1), std::max(height, 1));
}

void ValueDialog::Layout() {
    if (!m_isReady)
        return;
    CRect client;
    GetClientRect(client);
    const int height = m_buttonHeight;
    const int width = m_buttonWidth;
    const int right = client.right - kGap;
    Place(kIdAsLabel, kGap, kGap + 4, width, height);
    Place(kIdAs, kGap + width, kGap, width + 40, height * 6);
    Place(kIdInfo, 2 * kGap + 2 * width + 40, kGap + 4, right - 2 * kGap - 2 * width - 40, height);
    const int buttons = client.bottom - kGap - height;
    Place(kIdLoad, kGap, buttons, width, height);
    Place(kIdSave, 2 * kGap + width, buttons, width, height);
    Place(IDOK, right - 2 * width - kGap, buttons, width, height);
    Place(IDCANCEL, right - width, buttons, width, height);
    const bool isBytes = m_view == View::Bytes;
    const int pages = buttons - kGap - height;
    Place(kIdPrevious, kGap, pages, width, height);
    Place(kIdNext, 2 * kGap + width, pages, width, height);
    Place(kIdOffsetLabel, 4 * kGap + 2 * width, pages + 4, width, height);
    Place(kIdOffset, 4 * kGap + 3 * width, pages, width, height);
    Place(kIdPage, 6 * kGap + 4 * width, pages + 4, right - 6 * kGap - 4 * width, height);
    const int top = 2 * kGap + height;
    const int bottom = (isBytes ? pages : buttons) - kGap;
    for (const int id : {kIdText, kIdBytes})
        Place(id, kGap, top, right - kGap, bottom - top);
    // In the middle; a large picture is scaled down to fit.
    const CSize picture = m_picture.GetBitmapSize();
    const int pictureWidth = std::min<int>(picture.cx, right - kGap);
    const int pictureHeight = std::min<int>(picture.cy, bottom - top);
    Place(kIdPicture, (kGap + right - pictureWidth) / 2, (top + bottom - pictureHeight) / 2,
          pictureWidth, pictureHeight);
}

} // namespace vnquery
