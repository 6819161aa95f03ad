#include "platform/linux/LogindPowerActions.h"

#include "platform/Log.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <algorithm>
#include <optional>

namespace vantle {

namespace {
constexpr int kQueryTimeoutMs = 25'000;
// Long enough for the user to authenticate, or to answer the desktop's end-session dialog.
constexpr int kActionTimeoutMs = 10 * 60'000;

QDBusMessage login1(const QString& method) {
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.login1"),
                                          QStringLiteral("/org/freedesktop/login1"),
                                          QStringLiteral("org.freedesktop.login1.Manager"), method);
}

QDBusMessage request(const QString& service, const QString& path, const QString& interface,
                     const QString& method, const QVariantList& arguments = {}) {
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return message;
}

// The end-session request of the first session manager among `names`.
std::optional<QDBusMessage> sessionManagerRequest(const QStringList& names, bool restart) {
    if (names.contains(QStringLiteral("org.gnome.SessionManager"))) {
        return request(QStringLiteral("org.gnome.SessionManager"),
                       QStringLiteral("/org/gnome/SessionManager"),
                       QStringLiteral("org.gnome.SessionManager"),
                       restart ? QStringLiteral("Reboot") : QStringLiteral("Shutdown"));
    }
    if (names.contains(QStringLiteral("org.kde.Shutdown"))) {
        return request(QStringLiteral("org.kde.Shutdown"), QStringLiteral("/Shutdown"),
                       QStringLiteral("org.kde.Shutdown"),
                       restart ? QStringLiteral("logoutAndReboot")
                               : QStringLiteral("logoutAndShutdown"));
    }
    if (names.contains(QStringLiteral("org.kde.ksmserver"))) {
        // No confirmation, reboot (1) or halt (2), now (2).
        return request(QStringLiteral("org.kde.ksmserver"), QStringLiteral("/KSMServer"),
                       QStringLiteral("org.kde.KSMServerInterface"), QStringLiteral("logout"),
                       {0, restart ? 1 : 2, 2});
    }
    if (names.contains(QStringLiteral("org.xfce.SessionManager"))) {
        return request(QStringLiteral("org.xfce.SessionManager"),
                       QStringLiteral("/org/xfce/SessionManager"),
                       QStringLiteral("org.xfce.Session.Manager"),
                       restart ? QStringLiteral("Restart") : QStringLiteral("Shutdown"), {true});
    }
    return std::nullopt;
}
} // namespace

LogindPowerActions::LogindPowerActions(QDBusConnection systemBus, QDBusConnection sessionBus)
    : m_systemBus(std::move(systemBus))
    , m_sessionBus(std::move(sessionBus)) {}

void LogindPowerActions::sleep() {
    viaLogind(QStringLiteral("CanSuspend"), QStringLiteral("Suspend"));
}

void LogindPowerActions::restart(const QList<RunningApplicationRef>& askedToQuit) {
    end(Ending::restart, askedToQuit);
}

void LogindPowerActions::shutDown(const QList<RunningApplicationRef>& askedToQuit) {
    end(Ending::shutDown, askedToQuit);
}

void LogindPowerActions::end(Ending ending, const QList<RunningApplicationRef>& askedToQuit) {
    const QDBusMessage listNames =
        request(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ListNames"));
    send(m_sessionBus, listNames, kQueryTimeoutMs,
         [this, ending, askedToQuit](const QDBusMessage& reply) {
             const bool restart = ending == Ending::restart;
             const QString what = restart ? QStringLiteral("restart") : QStringLiteral("shut down");
             // Without an answer, carry on as if no session manager ran: the app check still
             // guards.
             const QStringList names = reply.type() == QDBusMessage::ReplyMessage
                                           ? reply.arguments().value(0).toStringList()
                                           : QStringList();
             if (const auto sessionRequest = sessionManagerRequest(names, restart)) {
                 send(m_sessionBus, *sessionRequest, kActionTimeoutMs,
                      [what, service = sessionRequest->service()](const QDBusMessage& answer) {
                          if (answer.type() == QDBusMessage::ErrorMessage) {
                              logLine(QStringLiteral("%1 refused to %2: %3")
                                          .arg(service, what, answer.errorMessage()));
                          }
                      });
                 return;
             }
             // Checked only now: the apps had until the session bus answered to go.
             if (std::any_of(
                     askedToQuit.cbegin(), askedToQuit.cend(),
                     [](const RunningApplicationRef& app) { return !app->isTerminated(); })) {
                 logLine(
                     QStringLiteral("did not %1: no session manager runs to save work, and apps "
                                    "asked to quit are still running")
                         .arg(what));
                 return;
             }
             if (restart) {
                 viaLogind(QStringLiteral("CanReboot"), QStringLiteral("Reboot"));
             } else {
                 viaLogind(QStringLiteral("CanPowerOff"), QStringLiteral("PowerOff"));
             }
         });
}

void LogindPowerActions::viaLogind(const QString& canMethod, const QString& method) {
    send(m_systemBus, login1(canMethod), kQueryTimeoutMs,
         [this, canMethod, method](const QDBusMessage& reply) {
             if (reply.type() == QDBusMessage::ErrorMessage) {
                 logLine(
                     QStringLiteral("logind %1 failed: %2").arg(canMethod, reply.errorMessage()));
                 return;
             }
             const QString answer = reply.arguments().value(0).toString();
             if (answer != QStringLiteral("yes") && answer != QStringLiteral("challenge")) {
                 logLine(QStringLiteral("logind %1 answers \"%2\"; not asking it to %3")
                             .arg(canMethod, answer, method));
                 return;
             }
             QDBusMessage call = login1(method);
             call.setArguments({true}); // interactive: polkit may ask the user to authenticate
             send(m_systemBus, call, kActionTimeoutMs, [method](const QDBusMessage& result) {
                 if (result.type() == QDBusMessage::ErrorMessage) {
                     logLine(
                         QStringLiteral("logind %1 failed: %2").arg(method, result.errorMessage()));
                 }
             });
         });
}

void LogindPowerActions::send(QDBusConnection& bus, const QDBusMessage& message, int timeoutMs,
                              ReplyHandler onReply) {
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(message, timeoutMs), &m_calls);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &m_calls,
                     [watcher, onReply = std::move(onReply)] {
                         watcher->deleteLater();
                         onReply(watcher->reply());
                     });
}

} // namespace vantle
