#pragma once

#include "platform/Clock.h"

#include <QObject>

namespace vantle {

class IdleTime;

// Publishes how long the whole session has gone without user input, sampled at a fixed interval.
class IdleMonitorService : public QObject {
    Q_OBJECT
    Q_PROPERTY(double systemIdleSeconds READ systemIdleSeconds NOTIFY systemIdleSecondsChanged)

public:
    IdleMonitorService(IdleTime& idleTime, Clock& clock, QObject* parent = nullptr);

    double systemIdleSeconds() const { return m_systemIdleSeconds; }

    // Samples at once, then every `intervalSeconds`; a later call replaces the running loop.
    void start(double intervalSeconds);

signals:
    // Emitted on every sample, even an unchanged one.
    void systemIdleSecondsChanged();

private:
    void sample();

    IdleTime& m_idleTime;
    Clock& m_clock;
    double m_systemIdleSeconds = 0;
    bool m_reportedUnavailable = false;
    Timer m_monitorTimer;
};

} // namespace vantle
