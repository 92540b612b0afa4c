// The system class COMBOBOX.
#pragma once

#include "src/window/controls/FieldMessages.h"
#include "src/window/core/WindowInternal.h"

#include <QPointer>

#include <optional>
#include <string>
#include <vector>

class QAbstractItemView;
class QLineEdit;

namespace vnbytstr::detail {

class ComboWidget;
class SimpleComboWidget;

// Invariants:
// 1. m_items are the widget's items, in their order.
// 2. m_current is an item's index or -1. The widget's own current index may differ while the field
//    holds a text that was typed.
// 3. m_messages is there as long as m_field.
class ComboControl final : public SystemControl, public EditFieldOwner {
public:
    explicit ComboControl(Window& window) : SystemControl(window) {}
    ~ComboControl() override;

    LRESULT Proc(UINT message, WPARAM wParam, LPARAM lParam) override;

    void FieldChanged() override;
    void FieldFull() override {}
    void FieldCommand(UINT message) override;

    // What the widget tells.
    void Picked(int index);
    void PopupShown();
    void PopupHidden();

private:
    struct Item {
        std::string text;
        std::uintptr_t data = 0;
    };

    void Create();
    void CreateDropDown(bool editable);
    void CreateSimple();
    std::optional<LRESULT> ItemProc(UINT message, WPARAM wParam, LPARAM lParam);
    std::optional<LRESULT> FieldProc(UINT message, WPARAM wParam, LPARAM lParam);
    std::optional<LRESULT> WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    std::optional<LRESULT> KeyProc(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT Add(const char* text);
    LRESULT Insert(int index, const char* text);
    LRESULT Delete(int index);
    void Reset();
    int Find(int after, const char* text, bool whole) const;
    LRESULT Select(int index);
    bool Has(int index) const { return index >= 0 && index < static_cast<int>(m_items.size()); }
    void ShowInField(const std::string& text);
    int FieldHeight() const;
    void Notify(int code);

    std::vector<Item> m_items;
    std::unique_ptr<EditField> m_field;      ///< null in a drop-down list
    std::optional<FieldMessages> m_messages; ///< there as long as m_field is
    QPointer<ComboWidget> m_combo;           ///< null in a simple one
    QPointer<SimpleComboWidget> m_simple;
    int m_current = -1;
    int m_droppedHeight = 0;
    int m_fieldHeight = 0; ///< as CB_SETITEMHEIGHT wants it; 0: the font's
    bool m_setting = false;
    bool m_pickedWhileOpen = false;
};

} // namespace vnbytstr::detail
