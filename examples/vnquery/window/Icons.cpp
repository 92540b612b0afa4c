#include "vnquery/window/Icons.h"

#include <QFile>

namespace vnquery {

QIcon Icon(const char* name) {
    const QString text = QString::fromLatin1(name);
    const QString own = QStringLiteral(":/vnquery/icons/%1.svg").arg(text);
    return QIcon::fromTheme(text, QFile::exists(own) ? QIcon(own) : QIcon());
}

} // namespace vnquery
