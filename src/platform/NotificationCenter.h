#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>

namespace vantle {

// Whether the program may post notifications, in the system's own numbering.
enum class AuthorizationStatus {
    notDetermined = 0,
    denied = 1,
    authorized = 2,
    provisional = 3,
    ephemeral = 4,
};

// How urgently a notification asks for attention. Time-sensitive ones stay until acted on.
enum class InterruptionLevel { passive = 0, active = 1, timeSensitive = 2, critical = 3 };

struct NotificationAction {
    QString identifier;
    QString title;
    bool operator==(const NotificationAction&) const = default;
};

// A kind of notification and the buttons it carries, in order.
struct NotificationCategory {
    QString identifier;
    QList<NotificationAction> actions;
    bool operator==(const NotificationCategory&) const = default;
};

struct NotificationRequest {
    QString identifier; // posting again under the same identifier replaces the earlier one
    QString title;
    QString body;
    QString categoryIdentifier; // empty: no buttons
    InterruptionLevel interruptionLevel = InterruptionLevel::active;
    bool operator==(const NotificationRequest&) const = default;
};

// The system's notification service. Posting is fire-and-forget: failures are logged by the
// implementation and otherwise ignored. Responses arrive on the main thread.
class NotificationCenter : public QObject {
    Q_OBJECT
public:
    // Reported as the action of a click on the notification's body. A category that wants such
    // clicks lists an action with this identifier and a label; without one a click does nothing.
    static inline const QString kDefaultActionIdentifier =
        QStringLiteral("com.apple.UNNotificationDefaultActionIdentifier");

    using QObject::QObject;
    ~NotificationCenter() override = default;

    // Replaces the whole set of categories.
    virtual void setCategories(const QList<NotificationCategory>& categories) = 0;
    virtual QList<NotificationCategory> categories() const = 0;

    virtual void add(const NotificationRequest& request) = 0;
    virtual void removeDelivered(const QStringList& requestIdentifiers) = 0;

    // Both answer later, on the main thread.
    virtual void readAuthorizationStatus(std::function<void(AuthorizationStatus)> done) = 0;
    // Asks the user once for permission to post alerts; `done` gets whether it was granted (an
    // error counts as no).
    virtual void requestAuthorization(std::function<void(bool granted)> done) = 0;
    // Opens the system's notification settings for this app; false when it could not.
    virtual bool openSettings() = 0;

signals:
    // The user chose an action (a button, or the body for kDefaultActionIdentifier).
    void didReceiveResponse(const QString& requestIdentifier, const QString& actionIdentifier);
    // Something that decides the status changed (a notification server came or went).
    void authorizationMayHaveChanged();
};

} // namespace vantle
