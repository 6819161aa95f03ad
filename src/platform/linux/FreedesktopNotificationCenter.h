#pragma once

#include "platform/NotificationCenter.h"

#include <QDBusConnection>
#include <QHash>
#include <optional>

class QDBusPendingCallWatcher;

namespace vantle {

// Notifications through the desktop's org.freedesktop.Notifications server. Only a server that
// shows buttons ("actions") counts as authorized: without buttons a warning could not be answered,
// so the warning services use their countdown panels instead.
class FreedesktopNotificationCenter final : public NotificationCenter {
    Q_OBJECT
public:
    explicit FreedesktopNotificationCenter(
        QDBusConnection bus, QString appName = QStringLiteral("Vantle"),
        QString desktopEntry = QStringLiteral("com.pelmark.vantle"), QObject* parent = nullptr);

    void setCategories(const QList<NotificationCategory>& categories) override;
    QList<NotificationCategory> categories() const override { return m_categories; }
    void add(const NotificationRequest& request) override;
    void removeDelivered(const QStringList& requestIdentifiers) override;
    void readAuthorizationStatus(std::function<void(AuthorizationStatus)> done) override;
    void requestAuthorization(std::function<void(bool granted)> done) override;
    // The desktop's own notification settings (GNOME, KDE, Xfce or the freedesktop portal).
    bool openSettings() override;

private slots:
    void onActionInvoked(uint id, const QString& actionKey);
    void onNotificationClosed(uint id, uint reason);

private:
    // One request identifier's notification on screen.
    struct Posted {
        uint serverId = 0; // 0 until the server has answered
        bool inFlight = false;
        std::optional<NotificationRequest> next; // posted while a Notify was still unanswered
        bool closeWhenKnown = false;
    };

    void send(const NotificationRequest& request, uint replacesId);
    void notifyFinished(QDBusPendingCallWatcher* watcher, const QString& requestIdentifier,
                        quint64 epoch);
    void close(uint serverId);
    void serverOwnerChanged(const QString& service, const QString& oldOwner,
                            const QString& newOwner);
    QStringList actionsFor(const NotificationRequest& request) const;

    QDBusConnection m_bus;
    QString m_appName;
    QString m_desktopEntry;
    QList<NotificationCategory> m_categories;
    QHash<QString, Posted> m_posted;
    // Bumped when the server goes away, so late answers from the old one are dropped.
    quint64 m_epoch = 0;
    bool m_failing = false;
};

} // namespace vantle
