// Shows one value: as text, as bytes with offsets, as a picture.
#pragma once

#include "vnquery/result/CellEdit.h"
#include "vnquery/result/HexDump.h"
#include "vnquery/window/TextDialog.h"

#include <optional>

namespace vnquery {

/// What the dialog shows.
struct ValueSubject {
    std::string column;     ///< its heading
    std::string cell;       ///< for messages, such as "row 1, column 2"
    std::size_t row = 0;    ///< as displayed, from 0
    const Value* value;     ///< must outlive the dialog
    bool isDefault = false; ///< its new value is the column's default
    ColumnKind kind = ColumnKind::Unknown;
    bool isEditable = false;
};

class ValueDialog : public TextDialog {
public:
    ValueDialog(const ValueSubject& subject, CWnd* parent);

    /// After IDOK: the new value, nothing when it was not changed.
    std::optional<NewValue>& GetNewValue() { return m_newValue; }

    BOOL PreTranslateMessage(MSG* message) override;

protected:
    BOOL OnInitDialog() override;
    void OnOK() override;
    void OnSize(UINT type, int cx, int cy);
    void OnGetMinMaxInfo(MINMAXINFO* info);
    void OnViewChosen();
    void OnPrevious();
    void OnNext();
    void OnGoTo();
    void OnLoad();
    void OnSave();
    DECLARE_MESSAGE_MAP()

private:
    enum class View { Text, Bytes, Picture };

    const Value& Shown() const { return m_loaded ? *m_loaded : *m_subject.value; }
    void ShowValue();
    void ShowText();
    void ShowBytes(DWORD firstLine);
    void ShowPicture();
    void ShowView(View view);
    void SetInfo(const std::string& text);
    void FocusView();
    void Layout();
    void Place(int id, int left, int top, int width, int height);
    bool IsTextEdited() const;

    ValueSubject m_subject;
    std::optional<Value> m_loaded; ///< from a file; replaces the subject's value
    std::optional<NewValue> m_newValue;
    View m_view = View::Text;
    std::vector<View> m_views; ///< the choices of the combo box
    std::string m_original;    ///< the text before it was edited
    DWORD m_firstLine = 0;     ///< of the page of bytes
    CBitmap m_picture;
    CFont m_fixedFont;
    int m_buttonWidth = 0; ///< of OK, in pixels, with the next
    int m_buttonHeight = 0;
    bool m_isReady = false;
};

} // namespace vnquery
