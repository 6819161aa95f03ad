#include "platform/linux/RuntimeLockInstanceGuard.h"

#include "platform/Log.h"

#include <QStandardPaths>

namespace vantle {

RuntimeLockInstanceGuard::RuntimeLockInstanceGuard(QString lockPath, QObject* parent)
    : InstanceGuard(parent)
    , m_lock(std::move(lockPath)) {}

QString RuntimeLockInstanceGuard::defaultPath(const QString& name) {
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QLatin1Char('/') +
           name + QStringLiteral(".lock");
}

InstanceGuard::Claim RuntimeLockInstanceGuard::claim() {
    switch (m_lock.tryLock()) {
    case FileLock::Result::Acquired:
        return Claim::Primary;
    case FileLock::Result::Busy: {
        const std::optional<qint64> holder = m_lock.holderPid();
        logLine(QStringLiteral("Vantle is already running%1; without a session bus it cannot be "
                               "asked to show itself")
                    .arg(holder ? QStringLiteral(" (process %1)").arg(*holder) : QString()));
        return Claim::AlreadyRunning;
    }
    case FileLock::Result::Failed:
        break;
    }
    logLine(QStringLiteral("cannot open %1 (%2); cannot make sure only one copy runs")
                .arg(m_lock.path(), m_lock.errorString()));
    return Claim::Unavailable;
}

InstanceGuard::Delivery RuntimeLockInstanceGuard::sendAction(const QString& name, QString* error) {
    switch (m_lock.tryLock()) {
    case FileLock::Result::Acquired:
        m_lock.unlock();
        return Delivery::NotRunning;
    case FileLock::Result::Busy:
        *error =
            QStringLiteral("no D-Bus session bus to hand \"%1\" to the running copy").arg(name);
        return Delivery::Failed;
    case FileLock::Result::Failed:
        break;
    }
    *error = QStringLiteral("cannot open %1 (%2)").arg(m_lock.path(), m_lock.errorString());
    return Delivery::Failed;
}

} // namespace vantle
