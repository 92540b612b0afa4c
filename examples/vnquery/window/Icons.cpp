#include "vnquery/window/Icons.h"

#include <QFile>

/// Resources of a static library are not there before they are asked for. (Not in a namespace, as
/// the macro wants it.)
static void LoadIcons() { Q_INIT_RESOURCE(icons); }

namespace vnquery {

QIcon Icon(const char* name) {
    static const bool isLoaded = (LoadIcons(), true);
    static_cast<void>(isLoaded);
    const QString text = QString::fromLatin1(name);
    const QString own = QStringLiteral(":/vnquery/icons/%1.svg").arg(text);
    return QIcon::fromTheme(text, QFile::exists(own) ? QIcon(own) : QIcon());
}

} // namespace vnquery
