#pragma once

namespace vantle {

// Starts the desktop's own notification settings (GNOME, KDE Plasma or Xfce), detached. False
// when none of them is installed or it would not start.
bool openDesktopNotificationSettings();

} // namespace vantle
