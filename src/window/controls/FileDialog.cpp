#include "vnbytstr/window/FileDialog.h"

#include "src/window/controls/FileFilters.h"
#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/Application.h"

#include "vnbytstr/framework/MessageBoxTypes.h"

#include <QFileDialog>
#include <QFileInfo>

using vnbytstr::detail::FromQString;
using vnbytstr::detail::ToQString;
using vnbytstr::detail::Window;

namespace {

CString ToText(const QString& text) {
    const std::string bytes = FromQString(text);
    return {bytes.data(), static_cast<int>(bytes.size())};
}

QString Shown(const CString& text) {
    return ToQString({text, static_cast<std::size_t>(text.GetLength())});
}

QWidget* ParentOf(const CWnd* given) {
    AfxInitWindows();
    const CWnd* const parent = given != nullptr ? given : AfxGetMainWnd();
    Window* const window = Window::Of(parent);
    return window != nullptr ? window->Widget() : nullptr;
}

} // namespace

CFileDialog::CFileDialog(BOOL open, LPCTSTR extension, LPCTSTR fileName, DWORD flags,
                         LPCTSTR filter, CWnd* parent)
    : m_open(open), m_extension(extension), m_name(fileName), m_filter(filter), m_flags(flags),
      m_parent(parent) {}

int CFileDialog::DoModal() {
    QWidget* const parent = ParentOf(m_parent);
    vnbytstr::detail::CancelCapture();
    QFileDialog dialog(parent);
    dialog.setAcceptMode(m_open ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
    const bool several = m_open && (m_flags & OFN_ALLOWMULTISELECT) != 0;
    const bool existing = m_open && (m_flags & (OFN_FILEMUSTEXIST | OFN_ALLOWMULTISELECT)) != 0;
    dialog.setFileMode(several    ? QFileDialog::ExistingFiles
                       : existing ? QFileDialog::ExistingFile
                                  : QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite, (m_flags & OFN_OVERWRITEPROMPT) == 0);
    const QStringList filters = vnbytstr::detail::NameFilters(Shown(m_filter));
    if (!filters.isEmpty())
        dialog.setNameFilters(filters);
    if (!m_extension.IsEmpty())
        dialog.setDefaultSuffix(Shown(m_extension));
    if (!m_folder.IsEmpty())
        dialog.setDirectory(Shown(m_folder));
    if (!m_name.IsEmpty())
        dialog.selectFile(Shown(m_name));
    m_paths.RemoveAll();
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return IDCANCEL;
    for (const QString& path : dialog.selectedFiles())
        m_paths.Add(ToText(path));
    return IDOK;
}

CString CFileDialog::GetPathName() const { return m_paths.GetSize() > 0 ? m_paths[0] : CString(); }

CString CFileDialog::GetFileName() const {
    return ToText(QFileInfo(Shown(GetPathName())).fileName());
}

CString CFileDialog::GetFileTitle() const {
    return ToText(QFileInfo(Shown(GetPathName())).completeBaseName());
}

CString CFileDialog::GetFileExt() const { return ToText(QFileInfo(Shown(GetPathName())).suffix()); }

int CFolderDialog::DoModal() {
    QFileDialog dialog(ParentOf(m_parent));
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    if (!m_title.IsEmpty())
        dialog.setWindowTitle(Shown(m_title));
    if (!m_folder.IsEmpty())
        dialog.setDirectory(Shown(m_folder));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return IDCANCEL;
    m_folder = ToText(dialog.selectedFiles().front());
    return IDOK;
}
