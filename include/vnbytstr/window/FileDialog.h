// CFileDialog and CFolderDialog: choose files to open, a file to save to, a folder.
#pragma once

#include "vnbytstr/framework/Arrays.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

// --- flags ---------------------------------------------------------------------------------------
inline constexpr DWORD OFN_OVERWRITEPROMPT = 0x00000002; ///< asks before an existing file is chosen
inline constexpr DWORD OFN_HIDEREADONLY = 0x00000004;
inline constexpr DWORD OFN_ALLOWMULTISELECT = 0x00000200;
inline constexpr DWORD OFN_FILEMUSTEXIST = 0x00001000;

/// The platform's file dialog. Names are in the ANSI code page, as files are opened by them.
class VNBYTSTR_CONTROLS_API CFileDialog {
public:
    /// `open` FALSE: to save. `extension` (without dot) is added to a name typed without one.
    /// `filter`: pairs of description and patterns ("*.txt;*.log"), each ended by '|', the last by
    /// a second one: "Text files|*.txt|All files|*.*||". "*.*" is every file.
    CFileDialog(BOOL open, LPCTSTR extension = nullptr, LPCTSTR fileName = nullptr,
                DWORD flags = OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT, LPCTSTR filter = nullptr,
                CWnd* parent = nullptr);
    virtual ~CFileDialog() = default;
    CFileDialog(const CFileDialog&) = delete;
    CFileDialog& operator=(const CFileDialog&) = delete;

    /// The folder that it begins with.
    void SetInitialFolder(LPCTSTR folder) { m_folder = folder; }

    /// IDOK or IDCANCEL.
    virtual int DoModal();

    // After IDOK:
    CString GetPathName() const;  ///< the full name
    CString GetFileName() const;  ///< without the folder
    CString GetFileTitle() const; ///< without folder and extension
    CString GetFileExt() const;   ///< without the dot

private:
    BOOL m_open;
    CString m_extension, m_name, m_filter, m_folder;
    DWORD m_flags;
    CWnd* m_parent;
    CStringArray m_paths;
};

/// The platform's dialog to choose a folder.
class VNBYTSTR_CONTROLS_API CFolderDialog {
public:
    /// Begins with that folder.
    explicit CFolderDialog(LPCTSTR folder = nullptr, LPCTSTR title = nullptr,
                           CWnd* parent = nullptr)
        : m_folder(folder), m_title(title), m_parent(parent) {}
    int DoModal(); ///< IDOK or IDCANCEL
    /// The folder that was chosen, else the one given.
    CString GetFolderPath() const { return m_folder; }

private:
    CString m_folder, m_title;
    CWnd* m_parent;
};
