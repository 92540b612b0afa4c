#include "vnquery/window/WindowText.h"

#include "vnbytstr/Profile.h"

namespace vnquery {

std::string GetText(const CWnd& window) {
    CString text;
    window.GetWindowText(text);
    return ToString(text);
}

std::string GetItemText(const CWnd& dialog, int id) {
    CString text;
    dialog.GetDlgItemText(id, text);
    return ToString(text);
}

int ShowMessage(const std::string& text, UINT type) {
    std::string shown = text;
    if (!shown.empty() && shown[0] >= 'a' && shown[0] <= 'z')
        shown[0] = static_cast<char>(shown[0] - 'a' + 'A');
    return AfxMessageBox(shown.c_str(), type, 0);
}

std::string SettingsTrouble() {
    CString text;
    return VNGetProfileStatus(&text) == ProfileSound ? "" : "\n\n" + ToString(text);
}

DWORD LayoutStyle() { return AreTextsRightToLeft() ? WS_EX_LAYOUTRTL : 0; }

std::string WithoutMarks(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size() && text[i] != '\t'; ++i) {
        if (text[i] == '&' && i + 1 < text.size())
            ++i;
        plain += text[i];
    }
    return plain;
}

} // namespace vnquery
