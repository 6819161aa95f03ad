#include "platform/linux/LogindSleepWatcher.h"

#include "platform/Log.h"

namespace vantle {

LogindSleepWatcher::LogindSleepWatcher(QDBusConnection systemBus, QObject* parent)
    : QObject(parent)
    , m_bus(std::move(systemBus)) {
    if (!m_bus.connect(QStringLiteral("org.freedesktop.login1"),
                       QStringLiteral("/org/freedesktop/login1"),
                       QStringLiteral("org.freedesktop.login1.Manager"),
                       QStringLiteral("PrepareForSleep"), this, SLOT(onPrepareForSleep(bool)))) {
        logLine(QStringLiteral("cannot watch logind's PrepareForSleep; waking is not noticed"));
    }
}

void LogindSleepWatcher::onPrepareForSleep(bool goingToSleep) {
    // logind sends false once the machine has resumed.
    if (!goingToSleep) {
        emit didWake();
    }
}

} // namespace vantle
