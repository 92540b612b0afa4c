// The program's texts for Qt.
#pragma once

#include "vnquery/messages/Messages.h"

#include <QRegularExpression>
#include <QString>

namespace vnquery {

/// The text with that id (IDS_VQ_...), as Text gives it. A widget takes its texts again when it gets
/// QEvent::LanguageChange: all do when the user chooses another language.
inline QString Label(UINT id) { return QString::fromStdString(Text(id)); }
inline QString Label(UINT id, std::initializer_list<std::string> insertions) {
    return QString::fromStdString(Text(id, insertions));
}

/// The text of a menu item or label without its key, the mark of its letter, and colon: for a
/// tip, or the name that a screen reader says.
inline QString PlainLabel(UINT id) {
    static const QRegularExpression marks(QStringLiteral("\\(&.\\)|&(?=.)|\\t.*|\\s*:$"));
    return Label(id).remove(marks);
}

/// Keeps a number and its unit in their order among texts that run from right to left.
inline std::string LeftToRight(const std::string& text) {
    return AreTextsRightToLeft() ? "\u2066" + text + "\u2069" : text;
}

/// A message as a sentence of its own: its first letter capitalized.
inline QString Sentence(const std::string& message) {
    QString text = QString::fromStdString(message);
    if (!text.isEmpty())
        text[0] = text[0].toUpper();
    return text;
}

} // namespace vnquery
