#pragma once

#include "platform/NotificationCenter.h"

#include <QObject>

namespace vantle {

// The one shared answer to whether Vantle may post notifications. The warning services ask it
// before each post and fall back to their countdown panels when the answer is no.
class NotificationAuthority final : public QObject {
    Q_OBJECT
    Q_PROPERTY(vantle::AuthorizationStatus status READ status NOTIFY statusChanged)
public:
    explicit NotificationAuthority(NotificationCenter& center, QObject* parent = nullptr);

    AuthorizationStatus status() const { return m_status; }
    // Re-reads the status from the notification service; the answer arrives later.
    void refresh();
    // Authorized or provisional; never for not determined, denied or ephemeral.
    bool canPostNotifications() const;
    void openNotificationSettings();

    // The status as the diagnostics report and the Advanced tab word it.
    static QString statusText(AuthorizationStatus status);

signals:
    void statusChanged();

private:
    NotificationCenter& m_center;
    AuthorizationStatus m_status = AuthorizationStatus::notDetermined;
};

} // namespace vantle
