// A dialog whose controls are listed in code, with texts from the resource library.
#pragma once

#include "vnquery/window/WindowText.h"

#include <deque>
#include <string>
#include <vector>

namespace vnquery {

/// The derived class's constructor adds the controls, in tab order. Places and sizes are in dialog
/// units. F1 opens the help page.
class TextDialog : public CDialog {
public:
    TextDialog(UINT title, int width, int height, unsigned helpTopic, CWnd* parent);

    int DoModal() override;
    BOOL PreTranslateMessage(MSG* message) override;

protected:
    void SetTitle(const std::string& title) { m_title = title; }
    /// Lets the user change the dialog's size.
    void MakeSizable() { m_style |= WS_THICKFRAME | WS_MAXIMIZEBOX; }

    void AddLabel(UINT text, int x, int y, int width, UINT id = 0xFFFF);
    void AddEdit(UINT id, int x, int y, int width, DWORD style = 0);
    void AddMultilineEdit(UINT id, int x, int y, int width, int height, DWORD style = 0);
    /// The height is that of the dropped list.
    void AddCombo(UINT id, int x, int y, int width, DWORD style, int height = 90);
    void AddCheck(UINT id, UINT text, int x, int y, int width);
    void AddButton(UINT id, UINT text, int x, int y, int width = 54, DWORD style = 0);
    /// OK and Cancel (or `ok`, a text's id) in the dialog's lower right corner.
    void AddOkCancel(UINT ok);
    void AddControl(const char* className, const std::string& text, UINT id, DWORD style, int x,
                    int y, int width, int height);

    int m_width;
    int m_height;

private:
    std::string m_title;
    unsigned m_helpTopic;
    CWnd* m_parent;
    DWORD m_style;
    std::deque<std::string> m_texts; ///< a deque never moves its elements
    std::vector<CDialogTemplate::Item> m_items;
};

/// Opens a page of the program's help.
void OpenHelp(unsigned topic);

} // namespace vnquery
