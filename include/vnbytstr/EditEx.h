// CEditEx, an edit control for one kind of value, and CBrowser, which lets the user choose a file
// or folder for it.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/Button.h"
#include "vnbytstr/window/Edit.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/SpinButton.h"

/// Asks the user for a file or a folder with the platform's dialog.
class VNBYTSTR_CONTROLS_API CBrowser {
public:
    /// What is asked for.
    enum EBrowseType : int { kFile = 0, kFolder = 1 };

    /// An EBrowseType.
    explicit CBrowser(int type = kFile) : m_nType(type) {}
    virtual ~CBrowser() = default;

    /// An EBrowseType.
    int GetBrowseType() const { return m_nType; }
    void SetBrowseType(int type) { m_nType = type; }
    /// Opens the dialog at `name`, or at the folder of that file. FALSE, with `name` unchanged, if
    /// the user cancels. Override it to show another dialog.
    virtual BOOL Browse(CWnd* parent, CString& name);

private:
    int m_nType;
};

/// An edit control with a type: 0 is an integer, 3 text with a browse button at its right, any
/// other value plain text. Typing into an integer is limited to digits, signs and the characters of
/// SetOtherCharacters; text that is pasted or set is not checked.
///
/// Spinner and browse button are siblings of the control at its right edge. ShowAll and PlaceAll
/// show and move them together with it; they are destroyed with it.
class VNBYTSTR_CONTROLS_API CEditEx : public CEdit {
    DECLARE_DYNAMIC(CEditEx)
public:
    /// The types of the control that mean something.
    enum EType : int { kInteger = 0, kText = 1, kBrowse = 3 };

    CEditEx() = default;
    ~CEditEx() override;

    /// An EType, or any other value for plain text.
    void SetType(int type) { m_nType = type; }
    int GetType() const { return m_nType; }
    /// The range of the spinner, inclusive.
    void SetRange(LONG minimum, LONG maximum);
    /// Characters that may also be typed into an integer (those of a null marker, say).
    void SetOtherCharacters(LPCTSTR characters) { m_strOther = characters; }
    /// Creates the spinner with that control id in the parent. FALSE when it cannot be created.
    BOOL CreateSpinner(UINT id);
    /// Creates the browse button; a click sends BN_CLICKED with that id to the parent, which calls
    /// Browse. `browser` must outlive the control. FALSE when it cannot be created.
    BOOL CreateBrowseButton(CBrowser* browser, UINT id);
    /// Lets the user choose a name and puts it into the control. FALSE if the user cancels.
    BOOL Browse();
    /// Whether a window is the control or one of its siblings.
    BOOL IsPart(const CWnd* window) const;
    /// Shows or hides the control with its siblings.
    void ShowAll(BOOL on);
    /// Moves the control with its siblings into a rectangle of the parent.
    void PlaceAll(const CRect& rect);

protected:
    void OnChar(UINT ch, UINT repeat, UINT flags);
    void OnDestroy();
    DECLARE_MESSAGE_MAP()

private:
    int m_nType = kText;
    LONG m_lMinimum = 0;
    LONG m_lMaximum = 0;
    CString m_strOther;
    CSpinButtonCtrl m_spinner;
    CButton m_button;
    CBrowser* m_pBrowser = nullptr;
};
