#include "schedule/ScheduleWarningService.h"

#include "platform/NotificationCenter.h"
#include "system/CountdownPresenter.h"
#include "system/NotificationAuthority.h"
#include "system/WarningSeconds.h"
#include "system/WarningStyle.h"

#include <QCoreApplication>

namespace vantle {

using namespace std::chrono_literals;

ScheduleWarningService::ScheduleWarningService(NotificationCenter& notifications,
                                               NotificationAuthority& authority, Clock& clock,
                                               std::unique_ptr<CountdownPresenter> presenter,
                                               QObject* parent)
    : QObject(parent)
    , m_notifications(notifications)
    , m_authority(authority)
    , m_clock(clock)
    , m_windowPresenter(std::move(presenter)) {}

ScheduleWarningService::~ScheduleWarningService() = default;

void ScheduleWarningService::registerCategory() {
    // Run after the other services have set theirs, so this one is added rather than replaced.
    m_registerTask = m_clock.singleShot(0ms, [this] {
        QList<NotificationCategory> categories = m_notifications.categories();
        categories.removeIf(
            [](const NotificationCategory& category) { return category.identifier == kCategory; });
        categories.append(NotificationCategory{
            kCategory,
            {NotificationAction{kNowAction,
                                QCoreApplication::translate("ScheduleWarningService", "Do It Now")},
             NotificationAction{kCancelAction,
                                QCoreApplication::translate("ScheduleWarningService", "Cancel")}}});
        m_notifications.setCategories(categories);
    });
}

QuitWarningStyle ScheduleWarningService::style() const {
    return resolveWarningStyle(
        m_settings ? std::optional(m_settings->scheduleWarningStyle()) : std::nullopt, m_authority);
}

void ScheduleWarningService::warn(ShutdownSchedule::Action action) {
    if (style() == QuitWarningStyle::never) {
        if (onProceed) {
            onProceed(action);
        }
        return;
    }
    // One warning at a time: the running one carries on and this occurrence is simply dropped.
    if (m_pending) {
        return;
    }
    m_pending = action;
    m_state.setAction(action);
    m_state.setSecondsLeft(m_settings ? wholeWarningSeconds(m_settings->scheduleWarningSeconds())
                                      : kDefaultWarningSeconds);
    if (style() == QuitWarningStyle::notification) {
        postWarning();
    } else {
        // The window style, or notifications are not allowed: the panel follows the state itself.
        QPointer<ScheduleWarningService> self(this);
        m_windowPresenter->show(m_state, [self](bool proceed) {
            if (self) {
                self->finish(proceed);
            }
        });
    }
    m_timer = m_clock.repeating(1s, [this] { tick(); });
}

void ScheduleWarningService::postWarning() {
    NotificationRequest request;
    request.identifier = kWarningRequest;
    request.title = ScheduleWarningState::title(m_state.action());
    request.body =
        QCoreApplication::translate("ScheduleWarningService", "In %1s. Cancel to skip this one.")
            .arg(m_state.secondsLeft());
    request.categoryIdentifier = kCategory;
    request.interruptionLevel = InterruptionLevel::timeSensitive;
    m_notifications.add(request);
}

void ScheduleWarningService::tick() {
    const int left = m_state.secondsLeft() - 1;
    m_state.setSecondsLeft(left);
    // A shown notification cannot count by itself: refresh it every ten seconds, then each second.
    if ((left % 10 == 0 || left <= 5) && style() == QuitWarningStyle::notification) {
        postWarning();
    }
    if (left < 1) {
        finish(true);
    }
}

void ScheduleWarningService::finish(bool proceed) {
    m_timer.reset();
    m_windowPresenter->close();
    m_notifications.removeDelivered({kWarningRequest});
    const std::optional<ShutdownSchedule::Action> action = std::exchange(m_pending, std::nullopt);
    if (action && proceed && onProceed) {
        onProceed(*action);
    }
}

void ScheduleWarningService::handleNotificationAction(const QString& identifier) {
    if (identifier == kNowAction) {
        finish(true);
    } else if (identifier == kCancelAction) {
        finish(false);
    }
}

} // namespace vantle
