// The program's texts for Qt.
#pragma once

#include "vnquery/messages/Messages.h"

#include <QGuiApplication>
#include <QRegularExpression>
#include <QString>

#include <vector>

namespace vnquery {

/// The text with marks that keep its own direction among texts that run from right to left: a path
/// begins with its slash there, too.
inline QString Isolated(const QString& text) {
    return QGuiApplication::isRightToLeft() ? QChar(0x2068) + text + QChar(0x2069) : text;
}

/// The text with that id (IDS_VQ_...), as Text gives it. A widget takes its texts again when it
/// gets QEvent::LanguageChange: all do when the user chooses another language.
inline QString Label(UINT id, std::initializer_list<std::string> insertions = {}) {
    std::vector<std::string> isolated;
    for (const std::string& insertion : insertions)
        isolated.push_back(Isolated(QString::fromStdString(insertion)).toStdString());
    const QString text = QString::fromStdString(Text(id, isolated));
    // A sentence that begins with a Latin word or a name runs from right to left nevertheless.
    static const QRegularExpression rightToLeft(QStringLiteral("[\u0590-\u06FF]"));
    const bool isTurned = AreTextsRightToLeft() && !text.isRightToLeft() &&
                          !text.startsWith(u'<') && text.contains(rightToLeft);
    return isTurned ? QChar(0x200F) + text : text;
}

/// The text of a menu item or label without its key, the mark of its letter, and colon: for a
/// tip, or the name that a screen reader says.
inline QString PlainLabel(UINT id) {
    static const QRegularExpression marks(QStringLiteral("\\(&.\\)|&(?=.)|\\t.*|\\s*:$"));
    return Label(id).remove(marks);
}

/// A message as a sentence of its own: its first word capitalized, unless that is a file's name.
inline QString Sentence(const std::string& message) {
    static const QRegularExpression word(QStringLiteral("^\\pL+[ ,:]"));
    QString text = QString::fromStdString(message);
    if (text.contains(word))
        text[0] = text[0].toUpper();
    return text;
}

} // namespace vnquery
