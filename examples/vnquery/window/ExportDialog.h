// Asks for the file and the form of an export.
#pragma once

#include "vnquery/files/ExportFormat.h"
#include "vnquery/window/TextDialog.h"

namespace vnquery {

class ExportDialog : public TextDialog {
public:
    explicit ExportDialog(CWnd* parent);
    // After IDOK:
    const std::string& GetFile() const { return m_file; }
    const ExportFormat& GetFormat() const { return m_format; }

protected:
    BOOL OnInitDialog() override;
    void OnOK() override;
    void OnBrowse();
    DECLARE_MESSAGE_MAP()

private:
    void Fill(int id, std::initializer_list<UINT> texts, int chosen);
    int Chosen(int id) const;
    bool ReadFile();
    bool ReadCcsid();
    bool ReadLength();
    void Complain(int id, const std::string& text);

    std::string m_file;
    ExportFormat m_format;
};

} // namespace vnquery
