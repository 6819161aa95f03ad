#pragma once

#include <QDBusConnection>
#include <QObject>

namespace vantle {

// Tells when the machine has woken from sleep, from logind's PrepareForSleep signal.
class LogindSleepWatcher final : public QObject {
    Q_OBJECT

public:
    explicit LogindSleepWatcher(QDBusConnection systemBus, QObject* parent = nullptr);

signals:
    void didWake();

private slots:
    void onPrepareForSleep(bool goingToSleep);

private:
    QDBusConnection m_bus;
};

} // namespace vantle
