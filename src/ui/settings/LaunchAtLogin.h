#pragma once

#include <QObject>

namespace vantle {

class AppSettings;
class LoginItem;

// Keeps the login item in step with the launch-at-login setting while the General tab is open:
// each change registers or removes the item, and a change the system refuses is logged and
// taken back, so the switch never claims what is not true.
class LaunchAtLogin final : public QObject {
    Q_OBJECT
public:
    LaunchAtLogin(AppSettings& settings, LoginItem& loginItem, QObject* parent = nullptr);

private:
    void settingChanged();

    AppSettings& m_settings;
    LoginItem& m_loginItem;
    bool m_reverting = false;
};

} // namespace vantle
