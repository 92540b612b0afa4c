#include "vnquery/window/TextDialog.h"

#include "vnbytstr/window/Button.h"
#include "vnbytstr/window/ComboBox.h"
#include "vnbytstr/window/Edit.h"
#include "vnquery/messages/HelpPages.h"

namespace vnquery {

namespace {

constexpr int kMargin = 7;
constexpr int kButtonHeight = 14;
constexpr int kButtonWidth = 54;

} // namespace

TextDialog::TextDialog(UINT title, int width, int height, unsigned helpTopic, CWnd* parent)
    : m_width(width), m_height(height), m_title(title ? Text(title) : std::string()),
      m_helpTopic(helpTopic), m_parent(parent),
      m_style(WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_CENTER) {}

int TextDialog::DoModal() {
    CDialogTemplate description{m_title.c_str(), static_cast<short>(m_width),
                                static_cast<short>(m_height), m_items};
    description.style = m_style;
    description.exStyle = LayoutStyle();
    if (!InitModalIndirect(description, m_parent))
        return -1;
    return CDialog::DoModal();
}

BOOL TextDialog::PreTranslateMessage(MSG* message) {
    if (message->message == WM_KEYDOWN && message->wParam == VK_F1) {
        OpenHelp(m_helpTopic);
        return TRUE;
    }
    return CDialog::PreTranslateMessage(message);
}

void TextDialog::AddControl(const char* className, const std::string& text, UINT id, DWORD style,
                            int x, int y, int width, int height) {
    m_texts.push_back(text);
    m_items.push_back({className, m_texts.back().c_str(), id, style, static_cast<short>(x),
                       static_cast<short>(y), static_cast<short>(width),
                       static_cast<short>(height)});
}

void TextDialog::AddLabel(UINT text, int x, int y, int width, UINT id) {
    AddControl("STATIC", text ? Text(text) : std::string(), id, 0, x, y, width, 9);
}

void TextDialog::AddEdit(UINT id, int x, int y, int width, DWORD style) {
    AddControl("EDIT", "", id, ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP | style, x, y, width, 13);
}

void TextDialog::AddMultilineEdit(UINT id, int x, int y, int width, int height, DWORD style) {
    AddControl("EDIT", "", id,
               ES_MULTILINE | ES_AUTOVSCROLL | ES_WANTRETURN | WS_BORDER | WS_VSCROLL | WS_TABSTOP |
                   style,
               x, y, width, height);
}

void TextDialog::AddCombo(UINT id, int x, int y, int width, DWORD style, int height) {
    AddControl("COMBOBOX", "", id, WS_VSCROLL | WS_TABSTOP | CBS_AUTOHSCROLL | style, x, y, width,
               height);
}

void TextDialog::AddCheck(UINT id, UINT text, int x, int y, int width) {
    AddControl("BUTTON", Text(text), id, BS_AUTOCHECKBOX | WS_TABSTOP, x, y, width, 11);
}

void TextDialog::AddButton(UINT id, UINT text, int x, int y, int width, DWORD style) {
    AddControl("BUTTON", Text(text), id, WS_TABSTOP | style, x, y, width, kButtonHeight);
}

void TextDialog::AddOkCancel(UINT ok) {
    const int y = m_height - kMargin - kButtonHeight;
    const int x = m_width - kMargin - kButtonWidth;
    AddButton(IDOK, ok, x - kButtonWidth - 4, y, kButtonWidth, BS_DEFPUSHBUTTON);
    AddButton(IDCANCEL, IDS_VQ_CANCEL, x, y, kButtonWidth);
}

void OpenHelp(unsigned topic) { OpenHelpPage(topic); }

} // namespace vnquery
