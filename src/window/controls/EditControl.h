// The system class EDIT. Inside platform/window only.
#pragma once

#include "src/window/controls/EditField.h"
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
// 1. m_original, when there is one, is the text that was set last, and nobody has changed the
//    field's since.
// 2. A field of one line has m_break "\n": its text goes through as it is.
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
    bool IsMultiline() const { return (m_window.m_style & 0x0004) != 0; }

    void SetText(const char* text);
    std::string Text() const;
    std::string Wire(const QString& text) const; // with the control's line breaks
    int ToBytes(int units) const;
    int ToUnits(int bytes) const;
    void SetSelection(int first, int end);
    LRESULT GetSelection(WPARAM first, LPARAM end) const;
    void ReplaceSelection(const char* text, bool canUndo);
    bool TypeByte(char byte);
    void Paste();
    LRESULT DialogCode(const MSG* message) const;

    std::unique_ptr<EditField> m_field;
    std::optional<std::string> m_original = std::string();
    std::string m_break = "\n";
    std::string m_typed; // the bytes of a character that is not complete yet
    std::string m_cue;
    ArrowKeyTaker* m_arrowKeys = nullptr;
    char m_password = 0;
    bool m_modified = false;
    bool m_setting = false;
};

} // namespace vnbytstr::detail
