#pragma once

#include "model/QuitWarningStyle.h"

#include <QString>
#include <optional>

namespace vantle {

class NotificationAuthority;

// How a warning reaches the user, given the stored style text (none without a settings store).
// An unknown or missing style warns by notification, the safe choice; a notification that may not
// be posted falls back to the window. Never stays never.
QuitWarningStyle resolveWarningStyle(const std::optional<QString>& storedStyle,
                                     const NotificationAuthority& authority);

} // namespace vantle
