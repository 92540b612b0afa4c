// File dialogs' filters in Qt's form.
#pragma once

#include <QStringList>

namespace vnbytstr::detail {

/// "Text files|*.txt;*.log|All files|*.*||" as {"Text files (*.txt *.log)", "All files (*)"}. A
/// description's own list of patterns is replaced; a pair that lacks its patterns is left out.
inline QStringList NameFilters(const QString& filter) {
    QStringList made;
    const QStringList parts = filter.split(u'|');
    for (qsizetype i = 0; i + 1 < parts.size() && !parts[i].isEmpty(); i += 2) {
        QString description = parts[i];
        if (const auto list = description.indexOf(QStringLiteral("(*")); list >= 0)
            description.truncate(list);
        QStringList patterns;
        for (const QString& pattern : parts[i + 1].split(u';', Qt::SkipEmptyParts))
            patterns << (pattern.trimmed() == u"*.*" ? QStringLiteral("*") : pattern.trimmed());
        if (!patterns.isEmpty())
            made << description.trimmed() + QStringLiteral(" (") + patterns.join(u' ') + u')';
    }
    return made;
}

} // namespace vnbytstr::detail
