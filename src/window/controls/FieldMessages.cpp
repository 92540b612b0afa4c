#include "src/window/controls/FieldMessages.h"

#include "src/charset/CodePage.h"
#include "src/window/core/WindowInternal.h"
#include "vnbytstr/window/Messages.h"

#include <QApplication>
#include <QClipboard>

#include <algorithm>
#include <utility>

namespace vnbytstr::detail {

// --- text and positions -------------------------------------------------------------------------

void FieldMessages::SetBreak(std::string bytes) {
    m_break = std::move(bytes);
    m_field.m_rules.breakBytes = m_break.size();
}

std::string FieldMessages::Bytes(const QString& text) const {
    std::string bytes = FromQString(text);
    if (m_break == "\n")
        return bytes;
    std::string out;
    out.reserve(bytes.size());
    for (const char byte : bytes) {
        if (byte == '\n')
            out += m_break;
        else
            out += byte;
    }
    return out;
}

QString FieldMessages::Units(std::string_view text) const {
    QString units = ToQString(text);
    if (m_multiline)
        units.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    return units;
}

int FieldMessages::ToBytes(int units) const {
    return static_cast<int>(Bytes(m_field.Text().left(units)).size());
}

int FieldMessages::ToUnits(int bytes) const {
    const std::string text = Bytes(m_field.Text());
    if (bytes >= static_cast<int>(text.size()))
        return m_field.Length();
    const auto& page = CodePage::Ansi();
    const std::size_t start = page.CharStart(text, static_cast<std::size_t>(std::max(bytes, 0)));
    QString before = ToQString(std::string_view(text).substr(0, start));
    if (m_break == "\r\n")
        before.remove(u'\r');
    return static_cast<int>(before.size());
}

LRESULT FieldMessages::GetSelection(WPARAM first, LPARAM end) const {
    const int from = ToBytes(m_field.SelectionStart());
    const int to = ToBytes(m_field.SelectionEnd());
    if (first != 0)
        *reinterpret_cast<DWORD*>(first) = static_cast<DWORD>(from);
    if (end != 0)
        *reinterpret_cast<DWORD*>(end) = static_cast<DWORD>(to);
    return from > 0xFFFF || to > 0xFFFF ? -1 : MAKELPARAM(from, to);
}

void FieldMessages::SetLimit(WPARAM bytes) {
    m_field.m_rules.limit = bytes == 0
                                ? EditRules::NoLimit
                                : std::min(static_cast<std::size_t>(bytes), EditRules::NoLimit);
}

// --- input --------------------------------------------------------------------------------------

bool FieldMessages::TypeByte(char byte) {
    if (m_typed.empty() && (static_cast<BYTE>(byte) < 0x20 || byte == 0x7F))
        return false;
    m_typed += byte;
    const char* const begin = m_typed.data();
    if (!CodePage::Ansi().IsCutShort(begin, begin + m_typed.size()))
        m_field.InsertFromUser(ToQString(std::exchange(m_typed, {})));
    return true;
}

std::optional<LRESULT> FieldMessages::Proc(UINT message) {
    switch (message) {
    case WM_COPY:
        Copy();
        return 0;
    case WM_CUT:
        Copy();
        if (!m_secret && !m_field.IsReadOnly())
            m_field.Insert(QString());
        return 0;
    case WM_PASTE:
        Paste();
        return 0;
    case WM_CLEAR:
        if (!m_field.IsReadOnly())
            m_field.Insert(QString());
        return 0;
    case WM_UNDO:
        return Undo() ? TRUE : FALSE;
    default:
        return std::nullopt;
    }
}

void FieldMessages::Copy() {
    if (!m_secret && m_field.SelectionStart() != m_field.SelectionEnd())
        m_field.Copy();
}

void FieldMessages::Paste() {
    QString text = QApplication::clipboard()->text();
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (!m_multiline) // the first line only
        text = text.section(u'\n', 0, 0).section(u'\r', 0, 0);
    if (!text.isEmpty())
        m_field.InsertFromUser(text);
}

bool FieldMessages::Undo() {
    if (!m_field.CanUndo() || m_field.IsReadOnly())
        return false;
    m_field.Undo();
    return true;
}

} // namespace vnbytstr::detail
