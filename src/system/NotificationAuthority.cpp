#include "system/NotificationAuthority.h"

#include "platform/Log.h"

#include <QPointer>

namespace vantle {

NotificationAuthority::NotificationAuthority(NotificationCenter& center, QObject* parent)
    : QObject(parent)
    , m_center(center) {
    connect(&m_center, &NotificationCenter::authorizationMayHaveChanged, this,
            &NotificationAuthority::refresh);
    refresh();
}

void NotificationAuthority::refresh() {
    QPointer<NotificationAuthority> self(this);
    m_center.readAuthorizationStatus([self](AuthorizationStatus status) {
        if (self && self->m_status != status) {
            self->m_status = status;
            emit self->statusChanged();
        }
    });
}

bool NotificationAuthority::canPostNotifications() const {
    return m_status == AuthorizationStatus::authorized ||
           m_status == AuthorizationStatus::provisional;
}

void NotificationAuthority::openNotificationSettings() {
    if (!m_center.openSettings()) {
        logLine(QStringLiteral("could not open the desktop's notification settings"));
    }
}

QString NotificationAuthority::statusText(AuthorizationStatus status) {
    switch (status) {
    case AuthorizationStatus::notDetermined:
        return QStringLiteral("not determined");
    case AuthorizationStatus::denied:
        return QStringLiteral("DENIED (warnings fall back to the window)");
    case AuthorizationStatus::authorized:
        return QStringLiteral("authorized");
    case AuthorizationStatus::provisional:
        return QStringLiteral("provisional");
    case AuthorizationStatus::ephemeral:
        break;
    }
    return QStringLiteral("unknown");
}

} // namespace vantle
