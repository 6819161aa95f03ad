#include "system/WarningStyle.h"

#include "system/NotificationAuthority.h"

namespace vantle {

QuitWarningStyle resolveWarningStyle(const std::optional<QString>& storedStyle,
                                     const NotificationAuthority& authority) {
    const auto chosen = storedStyle ? fromRawValue<QuitWarningStyle>(*storedStyle) : std::nullopt;
    switch (chosen.value_or(QuitWarningStyle::notification)) {
    case QuitWarningStyle::never:
        return QuitWarningStyle::never;
    case QuitWarningStyle::window:
        return QuitWarningStyle::window;
    case QuitWarningStyle::notification:
        break;
    }
    return authority.canPostNotifications() ? QuitWarningStyle::notification
                                            : QuitWarningStyle::window;
}

} // namespace vantle
