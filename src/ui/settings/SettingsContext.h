#pragma once

namespace vantle {

class AppMonitorService;
class AppSettings;
class HotKeyService;
class NotificationAuthority;
class PrivilegedRunner;
struct Platform;

// What the settings window's tabs read and change. Every tab is built from the same context, so
// the window can create each one only when it is first shown.
struct SettingsContext {
    AppSettings& settings;
    Platform& platform;
    AppMonitorService& apps;
    PrivilegedRunner& privileged;
    HotKeyService& hotKeys;
    NotificationAuthority& notifications;
};

} // namespace vantle
