// What edit controls and combo boxes do alike with the text field in them.
#pragma once

#include "src/window/controls/EditField.h"
#include "vnbytstr/window/WindowTypes.h"

#include <optional>
#include <string>
#include <string_view>

namespace vnbytstr::detail {

/// The messages of a text field in terms of the ANSI code page: positions count bytes, typed text
/// comes byte by byte. It does not own the field, which must live as long.
class FieldMessages {
public:
    /// `secret`: cut and copy do nothing (a password).
    FieldMessages(EditField& field, bool multiline, bool secret)
        : m_field(field), m_multiline(multiline), m_secret(secret) {}

    /// The bytes that stand for a line break in the text; "\n" unless set.
    void SetBreak(std::string bytes);
    std::string Bytes(const QString& text) const;
    /// The text for the field: its line breaks are '\n' in a field of several lines.
    QString Units(std::string_view text) const;

    /// A position in bytes for one in UTF-16 units, and back. A position inside a character counts
    /// as its beginning, one past the text as its end, a negative one as 0.
    int ToBytes(int units) const;
    int ToUnits(int bytes) const;
    /// EM_GETSEL, CB_GETEDITSEL: the parameters may be null; -1 when an end does not fit 16 bits.
    LRESULT GetSelection(WPARAM first, LPARAM end) const;
    /// EM_LIMITTEXT, CB_LIMITTEXT; 0 stands for no limit.
    void SetLimit(WPARAM bytes);

    /// A byte of WM_CHAR: inserts the character once it is whole. False for a control character,
    /// which is left to its key.
    bool TypeByte(char byte);
    /// Drops a character of which some bytes are missing yet.
    void ForgetTyped() { m_typed.clear(); }

    /// WM_CUT, WM_COPY, WM_PASTE, WM_CLEAR, WM_UNDO; no answer for other messages. The window may
    /// be destroyed afterwards.
    std::optional<LRESULT> Proc(UINT message);

private:
    void Copy();
    void Paste();
    bool Undo();

    EditField& m_field;
    bool m_multiline;
    bool m_secret;
    std::string m_break = "\n";
    std::string m_typed; ///< the bytes of a character that is not complete yet
};

} // namespace vnbytstr::detail
