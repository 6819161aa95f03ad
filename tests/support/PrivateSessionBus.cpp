#include "support/PrivateSessionBus.h"

#include <QStandardPaths>

namespace vantle::testing {

PrivateSessionBus::PrivateSessionBus() {
    const QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
    if (daemon.isEmpty()) {
        m_error = QStringLiteral("dbus-daemon is not installed");
        return;
    }
    m_daemon.start(daemon, {QStringLiteral("--config-file=" VANTLE_TEST_BUS_CONFIG),
                            QStringLiteral("--nofork"), QStringLiteral("--print-address=1")});
    if (!m_daemon.waitForStarted(5'000) || !m_daemon.waitForReadyRead(5'000)) {
        m_error = QStringLiteral("dbus-daemon did not start: %1")
                      .arg(QString::fromLocal8Bit(m_daemon.readAllStandardError()));
        return;
    }
    m_address = QString::fromLocal8Bit(m_daemon.readLine()).trimmed();
}

PrivateSessionBus::~PrivateSessionBus() {
    QDBusConnection::disconnectFromBus(QStringLiteral("vantle-test"));
    if (m_daemon.state() != QProcess::NotRunning) {
        m_daemon.terminate();
        m_daemon.waitForFinished(5'000);
    }
}

QDBusConnection PrivateSessionBus::connection() const {
    return QDBusConnection::connectToBus(m_address, QStringLiteral("vantle-test"));
}

} // namespace vantle::testing
