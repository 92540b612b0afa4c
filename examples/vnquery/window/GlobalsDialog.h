// Edits the global variables.
#pragma once

#include "vnquery/window/GlobalsList.h"
#include "vnquery/window/TextDialog.h"

namespace vnquery {

/// Shows what is saved now, including what other programs have saved since this one started. OK
/// applies the changes on top of what is saved by then and saves them; without changes it saves
/// nothing. Cancel changes nothing.
class GlobalsDialog : public TextDialog {
public:
    explicit GlobalsDialog(CWnd* parent);
    ~GlobalsDialog() override;

protected:
    BOOL OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;
    void OnAdd();
    void OnDelete();
    LRESULT OnStoreValue(WPARAM column, LPARAM value);
    LRESULT OnEditorClosed(WPARAM, LPARAM);
    DECLARE_MESSAGE_MAP()

private:
    void ReadVariables();
    bool HasChanges() const;
    bool ApplyChanges();

    std::vector<GlobalsRow> m_rows;
    std::vector<std::string> m_deleted;
    GlobalsList m_list;
};

/// Asks for the name and value of a new variable.
class NewVariableDialog : public TextDialog {
public:
    explicit NewVariableDialog(CWnd* parent);
    const std::string& GetName() const { return m_name; }
    const std::string& GetValue() const { return m_value; }

protected:
    void OnOK() override;

private:
    std::string m_name;
    std::string m_value;
};

} // namespace vnquery
