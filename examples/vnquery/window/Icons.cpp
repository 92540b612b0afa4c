#include "vnquery/window/Icons.h"

namespace vnquery {

QIcon Icon(const char* name) {
    const QString text = QString::fromLatin1(name);
    return QIcon::fromTheme(
        text, QIcon(QStringLiteral(":/vnquery/icons/") + text + QStringLiteral(".svg")));
}

} // namespace vnquery
