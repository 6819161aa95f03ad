#include "monitor/QuitWarningService.h"

#include "model/AppSettings.h"
#include "platform/NotificationCenter.h"
#include "system/CountdownPresenter.h"
#include "system/NotificationAuthority.h"
#include "system/WarningSeconds.h"
#include "system/WarningStyle.h"

#include <QCoreApplication>
#include <QSet>

namespace vantle {

namespace {

using namespace std::chrono_literals;

QString names(const QList<AppInfo>& apps) {
    QStringList list;
    for (const AppInfo& app : apps) {
        list << app.name;
    }
    return list.join(QStringLiteral(", "));
}

} // namespace

QuitWarningService::QuitWarningService(NotificationCenter& notifications,
                                       NotificationAuthority& authority, Clock& clock,
                                       std::unique_ptr<CountdownPresenter> presenter,
                                       QObject* parent)
    : QObject(parent)
    , m_notifications(notifications)
    , m_authority(authority)
    , m_clock(clock)
    , m_windowPresenter(std::move(presenter)) {}

QuitWarningService::~QuitWarningService() = default;

void QuitWarningService::registerCategory() {
    connect(&m_notifications, &NotificationCenter::didReceiveResponse, this,
            &QuitWarningService::handleResponse, Qt::UniqueConnection);
    m_notifications.setCategories({NotificationCategory{
        kCategory,
        {NotificationAction{kQuitNowAction,
                            QCoreApplication::translate("QuitWarningService", "Quit Now")},
         NotificationAction{kCancelAction,
                            QCoreApplication::translate("QuitWarningService", "Cancel")}}}});
    m_authorizationTask = m_clock.singleShot(0ms, [this] { requestAuthorizationIfNeeded(); });
}

void QuitWarningService::requestAuthorizationIfNeeded() {
    QPointer<QuitWarningService> self(this);
    m_notifications.readAuthorizationStatus([self](AuthorizationStatus status) {
        if (!self) {
            return;
        }
        if (status != AuthorizationStatus::notDetermined) {
            self->m_authority.refresh();
            return;
        }
        self->m_notifications.requestAuthorization([self](bool) {
            if (self) {
                self->m_authority.refresh();
            }
        });
    });
}

QuitWarningStyle QuitWarningService::style() const {
    return resolveWarningStyle(
        m_settings ? std::optional(m_settings->quitWarningStyle()) : std::nullopt, m_authority);
}

void QuitWarningService::present(const QList<AppInfo>& apps) {
    if (style() == QuitWarningStyle::never) {
        if (onQuit) {
            onQuit(apps);
        }
        return;
    }
    QSet<qint32> pending;
    for (const AppInfo& app : m_state.apps()) {
        pending.insert(app.id);
    }
    QList<AppInfo> merged = m_state.apps();
    for (const AppInfo& app : apps) {
        if (!pending.contains(app.id)) {
            pending.insert(app.id);
            merged.append(app);
        }
    }
    // A batch already being warned about is not warned about twice, nor its countdown reset.
    if (merged.size() == m_state.apps().size()) {
        return;
    }
    m_state.setApps(std::move(merged));
    m_state.setSecondsLeft(m_settings ? wholeWarningSeconds(m_settings->quitWarningSeconds())
                                      : kDefaultWarningSeconds);
    showWarning();
    if (!m_timer) {
        m_timer = m_clock.repeating(1s, [this] { tick(); });
    }
}

void QuitWarningService::showWarning() {
    if (style() == QuitWarningStyle::notification) {
        postWarning();
        m_presenting = Presenting::notification;
        return;
    }
    // The window style, or notifications are not allowed: the panel follows the state itself.
    if (m_presenting == Presenting::window) {
        return;
    }
    QPointer<QuitWarningService> self(this);
    m_windowPresenter->show(m_state, [self](bool quit) {
        if (self) {
            self->finish(quit);
        }
    });
    m_presenting = Presenting::window;
}

void QuitWarningService::postWarning() {
    const QList<AppInfo>& apps = m_state.apps();
    const bool one = apps.size() == 1;
    NotificationRequest request;
    request.identifier = kWarningRequest;
    request.title = one ? QCoreApplication::translate("QuitWarningService", "Quitting an Idle App")
                        : QCoreApplication::translate("QuitWarningService", "Quitting Idle Apps");
    // Whole sentences for each count, so a translation can word them its own way.
    request.body = (one ? QCoreApplication::translate("QuitWarningService",
                                                      "%1 — in %2s. Cancel to keep it open.")
                        : QCoreApplication::translate("QuitWarningService",
                                                      "%1 — in %2s. Cancel to keep them open."))
                       .arg(names(apps), QString::number(m_state.secondsLeft()));
    request.categoryIdentifier = kCategory;
    request.interruptionLevel = InterruptionLevel::timeSensitive;
    m_notifications.add(request);
}

void QuitWarningService::tick() {
    m_state.setSecondsLeft(m_state.secondsLeft() - 1);
    if (m_state.secondsLeft() <= 0) {
        finish(true);
    }
}

void QuitWarningService::finish(bool quit) {
    m_timer.reset();
    m_windowPresenter->close();
    m_notifications.removeDelivered({kWarningRequest});
    m_presenting = Presenting::none;
    const QList<AppInfo> apps = m_state.apps();
    m_state.setApps({});
    if (apps.isEmpty()) {
        return;
    }
    if (quit && onQuit) {
        onQuit(apps);
    } else if (!quit && onCancel) {
        onCancel(apps);
    }
}

void QuitWarningService::handleResponse(const QString& requestIdentifier,
                                        const QString& actionIdentifier) {
    Q_UNUSED(requestIdentifier);
    if (actionIdentifier == kQuitNowAction) {
        finish(true);
    } else if (actionIdentifier == kCancelAction) {
        finish(false);
    } else if (forwardUnhandledAction) {
        forwardUnhandledAction(actionIdentifier);
    }
}

void QuitWarningService::reportRefused(const QList<AppInfo>& apps) {
    // No window stands in for this one: it is only worth a notification.
    if (apps.isEmpty() || style() != QuitWarningStyle::notification) {
        return;
    }
    const bool one = apps.size() == 1;
    NotificationRequest request;
    request.identifier = kRefusedRequest;
    request.title =
        one ? QCoreApplication::translate("QuitWarningService", "An App Wouldn't Quit")
            : QCoreApplication::translate("QuitWarningService", "Some Apps Wouldn't Quit");
    request.body =
        QCoreApplication::translate("QuitWarningService",
                                    "%1 — still running, probably waiting on unsaved changes.")
            .arg(names(apps));
    request.interruptionLevel = InterruptionLevel::active;
    m_notifications.add(request);
}

} // namespace vantle
