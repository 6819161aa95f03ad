#pragma once

#include "model/ShutdownSchedule.h"

#include <QObject>

namespace vantle {

// The scheduled action under warning and its countdown, observed by the countdown panel.
class ScheduleWarningState final : public QObject {
    Q_OBJECT
    Q_PROPERTY(int secondsLeft READ secondsLeft NOTIFY secondsLeftChanged)
    Q_PROPERTY(vantle::ShutdownSchedule::Action action READ action NOTIFY actionChanged)
public:
    using QObject::QObject;

    int secondsLeft() const { return m_secondsLeft; }
    ShutdownSchedule::Action action() const { return m_action; }

    // The heading of both the notification and the panel.
    static QString title(ShutdownSchedule::Action action) {
        switch (action) {
        case ShutdownSchedule::Action::sleep:
            return QStringLiteral("Going to Sleep");
        case ShutdownSchedule::Action::shutdown:
            return QStringLiteral("Shutting Down");
        case ShutdownSchedule::Action::restart:
            return QStringLiteral("Restarting");
        case ShutdownSchedule::Action::wake:
        case ShutdownSchedule::Action::poweron:
            break;
        }
        return QStringLiteral("Waking");
    }

    void setSecondsLeft(int seconds) {
        m_secondsLeft = seconds;
        emit secondsLeftChanged();
    }
    void setAction(ShutdownSchedule::Action action) {
        m_action = action;
        emit actionChanged();
    }

signals:
    void secondsLeftChanged();
    void actionChanged();

private:
    int m_secondsLeft = 0;
    ShutdownSchedule::Action m_action = ShutdownSchedule::Action::shutdown;
};

} // namespace vantle
