#include "platform/linux/DesktopNotificationSettings.h"

#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

namespace vantle {

bool openDesktopNotificationSettings() {
    const QList<QStringList> commands{
        {QStringLiteral("gnome-control-center"), QStringLiteral("notifications")},
        {QStringLiteral("systemsettings"), QStringLiteral("kcm_notifications")},
        {QStringLiteral("xfce4-notifyd-config")},
    };
    for (const QStringList& command : commands) {
        const QString program = QStandardPaths::findExecutable(command.constFirst());
        if (!program.isEmpty() && QProcess::startDetached(program, command.mid(1))) {
            return true;
        }
    }
    return false;
}

} // namespace vantle
