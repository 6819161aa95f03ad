#pragma once

#include "model/AppSettings.h"
#include "model/QuitWarningStyle.h"
#include "model/ShutdownSchedule.h"
#include "platform/Clock.h"
#include "schedule/ScheduleWarningState.h"

#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>
#include <optional>

namespace vantle {

class NotificationAuthority;
class NotificationCenter;
class CountdownPresenter;

// Stands between a scheduled power action and the action itself: announces it in the chosen
// style (a notification, the countdown panel, or not at all), counts down, then carries it out or
// skips this one occurrence when the user cancels.
class ScheduleWarningService final : public QObject {
    Q_OBJECT
public:
    static inline const QString kCategory = QStringLiteral("Vantle.schedule");
    static inline const QString kNowAction = QStringLiteral("Vantle.schedule.now");
    static inline const QString kCancelAction = QStringLiteral("Vantle.schedule.cancel");
    static inline const QString kWarningRequest = QStringLiteral("Vantle.schedule.warning");

    ScheduleWarningService(NotificationCenter& notifications, NotificationAuthority& authority,
                           Clock& clock, std::unique_ptr<CountdownPresenter> presenter,
                           QObject* parent = nullptr);
    ~ScheduleWarningService() override;

    void setSettings(AppSettings* settings) { m_settings = settings; }

    std::function<void(ShutdownSchedule::Action)> onProceed;

    // On the next turn of the event loop, adds this service's category to those already set.
    void registerCategory();
    // A scheduled action is due. Dropped while another warning runs.
    void warn(ShutdownSchedule::Action action);
    // Ends the warning: carries out the pending action, or skips it.
    void finish(bool proceed);
    // A notification response handed over by whoever receives them; foreign ones are ignored.
    void handleNotificationAction(const QString& identifier);

    ScheduleWarningState& state() { return m_state; }
    bool isWarning() const { return m_pending.has_value(); }

private:
    QuitWarningStyle style() const;
    void postWarning();
    void tick();

    NotificationCenter& m_notifications;
    NotificationAuthority& m_authority;
    Clock& m_clock;
    QPointer<AppSettings> m_settings;
    ScheduleWarningState m_state;
    std::unique_ptr<CountdownPresenter> m_windowPresenter;
    Timer m_timer;
    Timer m_registerTask;
    std::optional<ShutdownSchedule::Action> m_pending;
};

} // namespace vantle
