#include "vnquery/window/KeptPassword.h"

#ifdef VNQUERY_KEYCHAIN
#include <qt6keychain/keychain.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QEventLoop>
#endif

namespace vnquery {

#ifdef VNQUERY_KEYCHAIN

namespace {

constexpr char kService[] = "vnquery";

/// Waits for the service, which may ask the user to unlock it. Returns whether it did its work.
bool Run(QKeychain::Job& job, const QString& name) {
    QEventLoop loop;
    job.setAutoDelete(false);
    job.setKey(name);
    QObject::connect(&job, &QKeychain::Job::finished, &loop, &QEventLoop::quit);
    job.start();
    loop.exec(QEventLoop::ExcludeUserInputEvents); // the window must not change meanwhile
    return job.error() == QKeychain::NoError || job.error() == QKeychain::EntryNotFound;
}

} // namespace

bool CanKeepPasswords() {
    QDBusConnectionInterface* const bus = QDBusConnection::sessionBus().interface();
    if (!bus)
        return false;
    const QStringList services =
        bus->registeredServiceNames().value() + bus->activatableServiceNames().value();
    return services.contains(QLatin1String("org.freedesktop.secrets")) ||
           services.contains(QLatin1String("org.kde.kwalletd5"));
}

std::optional<QString> ReadPassword(const QString& name) {
    if (!CanKeepPasswords())
        return {};
    QKeychain::ReadPasswordJob job{QLatin1String(kService)};
    const bool isRead = Run(job, name) && job.error() == QKeychain::NoError;
    return isRead ? std::optional(job.textData()) : std::nullopt;
}

QString KeepPassword(const QString& name, const QString& password) {
    if (!CanKeepPasswords())
        return {};
    QKeychain::WritePasswordJob write{QLatin1String(kService)};
    QKeychain::DeletePasswordJob remove{QLatin1String(kService)};
    write.setTextData(password);
    QKeychain::Job& job = password.isEmpty() ? static_cast<QKeychain::Job&>(remove) : write;
    return Run(job, name) ? QString() : job.errorString();
}

#else

bool CanKeepPasswords() { return false; }
std::optional<QString> ReadPassword(const QString&) { return {}; }
QString KeepPassword(const QString&, const QString&) { return {}; }

#endif

} // namespace vnquery
