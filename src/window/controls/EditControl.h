// The system class EDIT.
#pragma once

#include "src/window/controls/FieldMessages.h"
#include "src/window/core/WindowInternal.h"

#include <optional>
#include <string>

namespace vnbytstr::detail {

/// Gets the up and down keys of an edit control (a spin button, of its buddy).
class ArrowKeyTaker {
public:
    virtual ~ArrowKeyTaker() = default;
    virtual void ArrowKey(bool up) = 0;
};

// Invariants:
// 1. m_original, when it has a value, is the text that was set last and that the field still shows.
// 2. m_messages is there as long as m_field.
class EditControl final : public SystemControl, public EditFieldOwner {
public:
    explicit EditControl(Window& window) : SystemControl(window) {}

    LRESULT Proc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void SetArrowKeys(ArrowKeyTaker* taker) { m_arrowKeys = taker; }
    ArrowKeyTaker* ArrowKeys() const { return m_arrowKeys; }

    void FieldChanged() override;
    void FieldFull() override;
    void FieldCommand(UINT message) override;

private:
    void Create(const CREATESTRUCT& create);
    std::optional<LRESULT> TextProc(UINT message, WPARAM wParam, LPARAM lParam);
    std::optional<LRESULT> EditProc(UINT message, WPARAM wParam, LPARAM lParam);
    std::optional<LRESULT> LineProc(UINT message, WPARAM wParam, LPARAM lParam);
    std::optional<LRESULT> KeyProc(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT Notify(int code);
    bool IsMultiline() const { return (m_window.Style() & 0x0004) != 0; }

    void SetText(const char* text);
    std::string Text() const;
    void SetSelection(int first, int end);
    void ReplaceSelection(const char* text, bool canUndo);
    LRESULT DialogCode(const MSG* message) const;

    std::unique_ptr<EditField> m_field;
    std::optional<FieldMessages> m_messages; ///< there as long as m_field is
    std::optional<std::string> m_original = std::string();
    std::string m_cue;
    ArrowKeyTaker* m_arrowKeys = nullptr;
    bool m_modified = false;
    bool m_setting = false;
};

} // namespace vnbytstr::detail
