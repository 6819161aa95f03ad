#pragma once

#include "model/AppInfo.h"
#include "model/AppSettings.h"
#include "model/QuitWarningStyle.h"
#include "monitor/QuitWarningState.h"
#include "platform/Clock.h"

#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>

namespace vantle {

class CountdownPresenter;
class NotificationAuthority;
class NotificationCenter;

// Stands between the auto-quit engine and the quit itself: announces each batch in the chosen
// style (a notification, the countdown panel, or not at all), counts down, then hands the batch
// on or drops it when the user cancels. It also words the notice about apps that refused, and
// passes on notification actions that belong to others.
class QuitWarningService final : public QObject {
    Q_OBJECT
public:
    static inline const QString kCategory = QStringLiteral("Vantle.autoQuit");
    static inline const QString kQuitNowAction = QStringLiteral("Vantle.autoQuit.quitNow");
    static inline const QString kCancelAction = QStringLiteral("Vantle.autoQuit.cancel");
    static inline const QString kWarningRequest = QStringLiteral("Vantle.autoQuit.warning");
    static inline const QString kRefusedRequest = QStringLiteral("Vantle.autoQuit.refused");

    enum class Presenting { none, notification, window };

    QuitWarningService(NotificationCenter& notifications, NotificationAuthority& authority,
                       Clock& clock, std::unique_ptr<CountdownPresenter> presenter,
                       QObject* parent = nullptr);
    ~QuitWarningService() override;

    void setSettings(AppSettings* settings) { m_settings = settings; }

    std::function<void(const QList<AppInfo>&)> onQuit;
    std::function<void(const QList<AppInfo>&)> onCancel;
    std::function<void(const QString& actionIdentifier)> forwardUnhandledAction;

    // Takes the notification responses, sets the categories to this service's alone (others add
    // theirs afterwards) and, on the next turn of the event loop, asks for permission if never
    // asked before.
    void registerCategory();
    void requestAuthorizationIfNeeded();

    // A batch due to quit. Apps already pending are ignored; new ones join the batch and restart
    // the countdown at the full time.
    void present(const QList<AppInfo>& apps);
    // Tells the user which apps are still running after being asked to quit.
    void reportRefused(const QList<AppInfo>& apps);
    // Ends the warning: quits the pending batch, or cancels it.
    void finish(bool quit);

    QuitWarningState& state() { return m_state; }
    Presenting presenting() const { return m_presenting; }

private:
    QuitWarningStyle style() const;
    void showWarning();
    void postWarning();
    void tick();
    void handleResponse(const QString& requestIdentifier, const QString& actionIdentifier);

    NotificationCenter& m_notifications;
    NotificationAuthority& m_authority;
    Clock& m_clock;
    QPointer<AppSettings> m_settings;
    QuitWarningState m_state;
    std::unique_ptr<CountdownPresenter> m_windowPresenter;
    Timer m_timer;
    Timer m_authorizationTask;
    Presenting m_presenting = Presenting::none;
};

} // namespace vantle
