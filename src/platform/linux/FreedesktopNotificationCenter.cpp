#include "platform/linux/FreedesktopNotificationCenter.h"

#include "platform/Log.h"
#include "platform/linux/DesktopNotificationSettings.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <utility>

namespace vantle {

namespace {
const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kDefaultKey = QStringLiteral("default");

QDBusMessage serverCall(const QString& method) {
    return QDBusMessage::createMethodCall(kService, kPath, kService, method);
}
} // namespace

FreedesktopNotificationCenter::FreedesktopNotificationCenter(QDBusConnection bus, QString appName,
                                                             QString desktopEntry, QObject* parent)
    : NotificationCenter(parent)
    , m_bus(std::move(bus))
    , m_appName(std::move(appName))
    , m_desktopEntry(std::move(desktopEntry)) {
    // QDBusConnection::connect has no member-pointer form.
    m_bus.connect(kService, kPath, kService, QStringLiteral("ActionInvoked"), this,
                  SLOT(onActionInvoked(uint, QString)));
    m_bus.connect(kService, kPath, kService, QStringLiteral("NotificationClosed"), this,
                  SLOT(onNotificationClosed(uint, uint)));
    auto* watcher =
        new QDBusServiceWatcher(kService, m_bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            &FreedesktopNotificationCenter::serverOwnerChanged);
}

void FreedesktopNotificationCenter::setCategories(const QList<NotificationCategory>& categories) {
    m_categories = categories;
}

void FreedesktopNotificationCenter::add(const NotificationRequest& request) {
    Posted& posted = m_posted[request.identifier];
    if (posted.inFlight) {
        // Without the first id the replacement would be a second notification; wait for it.
        posted.next = request;
        posted.closeWhenKnown = false;
        return;
    }
    send(request, posted.serverId);
}

void FreedesktopNotificationCenter::send(const NotificationRequest& request, uint replacesId) {
    const bool timeSensitive = request.interruptionLevel == InterruptionLevel::timeSensitive;
    const uchar urgency = request.interruptionLevel == InterruptionLevel::critical ? 2 : 1;
    QVariantMap hints{{QStringLiteral("desktop-entry"), m_desktopEntry},
                      {QStringLiteral("urgency"), QVariant::fromValue(urgency)}};
    if (timeSensitive) {
        hints.insert(QStringLiteral("resident"), false);
    }
    QDBusMessage notify = serverCall(QStringLiteral("Notify"));
    notify << m_appName << replacesId << m_desktopEntry << request.title << request.body
           << actionsFor(request) << hints << qint32(timeSensitive ? 0 : -1);

    m_posted[request.identifier].inFlight = true;
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(notify), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, identifier = request.identifier, epoch = m_epoch](QDBusPendingCallWatcher* w) {
                notifyFinished(w, identifier, epoch);
            });
}

void FreedesktopNotificationCenter::notifyFinished(QDBusPendingCallWatcher* watcher,
                                                   const QString& requestIdentifier,
                                                   quint64 epoch) {
    watcher->deleteLater();
    const QDBusPendingReply<uint> reply = *watcher;
    if (reply.isError()) {
        if (!m_failing) {
            logLine(
                QStringLiteral("could not post a notification: %1").arg(reply.error().message()));
        }
        m_failing = true;
    } else {
        m_failing = false;
    }

    const auto it = m_posted.find(requestIdentifier);
    if (epoch != m_epoch || it == m_posted.end()) {
        return;
    }
    it->inFlight = false;
    if (reply.isValid()) {
        it->serverId = reply.value();
    }
    if (it->closeWhenKnown) {
        close(it->serverId);
        m_posted.erase(it);
    } else if (it->next) {
        const NotificationRequest next = *std::exchange(it->next, std::nullopt);
        send(next, it->serverId);
    } else if (it->serverId == 0) {
        m_posted.erase(it);
    }
}

void FreedesktopNotificationCenter::removeDelivered(const QStringList& requestIdentifiers) {
    for (const QString& identifier : requestIdentifiers) {
        const auto it = m_posted.find(identifier);
        if (it == m_posted.end()) {
            continue;
        }
        if (it->inFlight) {
            it->next.reset();
            it->closeWhenKnown = true;
            continue;
        }
        close(it->serverId);
        m_posted.erase(it);
    }
}

void FreedesktopNotificationCenter::close(uint serverId) {
    if (serverId != 0) {
        QDBusMessage message = serverCall(QStringLiteral("CloseNotification"));
        message << serverId;
        m_bus.send(message);
    }
}

QStringList FreedesktopNotificationCenter::actionsFor(const NotificationRequest& request) const {
    QStringList actions;
    if (!request.categoryIdentifier.isEmpty()) {
        for (const NotificationCategory& category : m_categories) {
            if (category.identifier == request.categoryIdentifier) {
                for (const NotificationAction& action : category.actions) {
                    actions << (action.identifier == kDefaultActionIdentifier ? kDefaultKey
                                                                              : action.identifier)
                            << action.title;
                }
                break;
            }
        }
    }
    // No blank "default" for every notification: servers list it as an empty menu entry, and a
    // click on a notification that declares no default action does nothing anyway.
    return actions;
}

void FreedesktopNotificationCenter::onActionInvoked(uint id, const QString& actionKey) {
    for (auto it = m_posted.cbegin(); it != m_posted.cend(); ++it) {
        if (it->serverId == id) {
            emit didReceiveResponse(it.key(), actionKey == kDefaultKey ? kDefaultActionIdentifier
                                                                       : actionKey);
            return;
        }
    }
}

void FreedesktopNotificationCenter::onNotificationClosed(uint id, uint reason) {
    Q_UNUSED(reason);
    for (auto it = m_posted.begin(); it != m_posted.end(); ++it) {
        if (it->serverId == id) {
            if (it->inFlight) {
                it->serverId = 0;
            } else {
                m_posted.erase(it);
            }
            return;
        }
    }
}

void FreedesktopNotificationCenter::readAuthorizationStatus(
    std::function<void(AuthorizationStatus)> done) {
    if (!m_bus.isConnected()) {
        // A call on a dead connection never reports back; no bus means no server.
        QMetaObject::invokeMethod(
            this, [done = std::move(done)] { done(AuthorizationStatus::denied); },
            Qt::QueuedConnection);
        return;
    }
    QDBusMessage query = serverCall(QStringLiteral("GetCapabilities"));
    // Only a server that is running counts; asking must not start one.
    query.setAutoStartService(false);
    // The watcher reports from the event loop even when the call failed at once.
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(query), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [done = std::move(done)](QDBusPendingCallWatcher* w) {
                w->deleteLater();
                const QDBusPendingReply<QStringList> capabilities = *w;
                const bool actions = capabilities.isValid() &&
                                     capabilities.value().contains(QStringLiteral("actions"));
                done(actions ? AuthorizationStatus::authorized : AuthorizationStatus::denied);
            });
}

void FreedesktopNotificationCenter::requestAuthorization(std::function<void(bool granted)> done) {
    // There is no permission prompt here: the answer is whether a usable server is running.
    readAuthorizationStatus([done = std::move(done)](AuthorizationStatus status) {
        done(status == AuthorizationStatus::authorized);
    });
}

void FreedesktopNotificationCenter::serverOwnerChanged(const QString& service,
                                                       const QString& oldOwner,
                                                       const QString& newOwner) {
    Q_UNUSED(service);
    Q_UNUSED(newOwner);
    if (!oldOwner.isEmpty()) {
        // The old server's ids mean nothing to its successor.
        m_posted.clear();
        ++m_epoch;
    }
    emit authorizationMayHaveChanged();
}

bool FreedesktopNotificationCenter::openSettings() {
    return openDesktopNotificationSettings();
}

} // namespace vantle
