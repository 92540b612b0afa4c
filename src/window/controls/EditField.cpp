#include "src/window/controls/EditField.h"

#include "src/window/controls/LineField.h"
#include "src/window/controls/TextField.h"
#include "src/window/core/WindowInternal.h"
#include "vnbytstr/window/Wnd.h"

#include <QKeyEvent>
#include <QTextBoundaryFinder>

namespace vnbytstr::detail {

namespace {

/// The longest beginning of whole user-perceived characters that fits into `bytes`.
QString CutToBytes(const EditRules& rules, const QString& text, std::size_t bytes) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    std::size_t used = 0;
    qsizetype kept = 0;
    for (qsizetype next = finder.toNextBoundary(); next > 0; next = finder.toNextBoundary()) {
        used += rules.Bytes(text.mid(kept, next - kept));
        if (used > bytes)
            break;
        kept = next;
    }
    return text.left(kept);
}

} // namespace

std::size_t EditRules::Bytes(const QString& text) const {
    return FromQString(text).size() +
           static_cast<std::size_t>(text.count(u'\n')) * (breakBytes - 1);
}

QString EditRules::Fit(const QString& text, const QString& removed, QString added,
                       bool& full) const {
    if (upper)
        added = added.toUpper();
    if (lower)
        added = added.toLower();
    if (digits)
        added.removeIf([](QChar ch) { return ch < u'0' || ch > u'9'; });
    // No encoding takes more than four bytes for a unit, so a short text needs no counting.
    const auto units = static_cast<std::size_t>(text.size() + added.size());
    if (limit >= NoLimit || units * 4 <= limit)
        return added;
    const std::size_t used = Bytes(text) - Bytes(removed);
    const std::size_t space = limit > used ? limit - used : 0;
    if (Bytes(added) <= space)
        return added;
    full = true;
    return CutToBytes(*this, added, space);
}

void EditField::InsertFromUser(const QString& text) {
    if (IsReadOnly())
        return;
    bool full = false;
    const QString fitting = m_rules.Fit(Text(), SelectedText(), text, full);
    // When the rules let nothing in, the selection stays; an empty text is meant to delete it.
    const std::weak_ptr<char> life = m_life;
    if (!fitting.isEmpty() || text.isEmpty())
        Insert(fitting);
    if (full && !life.expired())
        m_owner.FieldFull();
}

Qt::Alignment AlignmentOf(const EditFieldStyle& style) {
    if (style.center)
        return Qt::AlignHCenter;
    // Leading depends on the text: only where nothing else says the side.
    if (!style.mirrored && !style.right)
        return Qt::AlignLeading;
    return Qt::AlignAbsolute | (style.right == style.mirrored ? Qt::AlignLeft : Qt::AlignRight);
}

std::unique_ptr<EditField> MakeEditField(const EditFieldStyle& style, EditFieldOwner& owner,
                                         QWidget* parent) {
    if (style.multiline)
        return std::make_unique<TextField>(owner, style, parent);
    auto field = std::make_unique<LineField>(owner, parent);
    field->Line()->setAlignment(AlignmentOf(style) | Qt::AlignVCenter);
    return field;
}

std::unique_ptr<EditField> MakeLineField(EditFieldOwner& owner, const EditFieldStyle& style,
                                         QLineEdit*& widget) {
    auto field = std::make_unique<LineField>(owner, nullptr);
    field->Line()->setAlignment(AlignmentOf(style) | Qt::AlignVCenter);
    widget = field->Line();
    return field;
}

UINT ClipboardCommand(const QKeyEvent& event) {
    return event.matches(QKeySequence::Copy)    ? WM_COPY
           : event.matches(QKeySequence::Cut)   ? WM_CUT
           : event.matches(QKeySequence::Paste) ? WM_PASTE
           : event.matches(QKeySequence::Undo)  ? WM_UNDO
                                                : 0;
}

bool IsTypedText(const QString& text, Qt::KeyboardModifiers modifiers) {
    // AltGr comes as Control and Alt together on some platforms.
    const auto command = modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    const bool altGr = command == (Qt::ControlModifier | Qt::AltModifier);
    return !text.isEmpty() && text.front() >= u' ' && text.front() != u'\x7F' &&
           (command == Qt::NoModifier || altGr);
}

} // namespace vnbytstr::detail
