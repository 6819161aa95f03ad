#pragma once

#include "platform/LoginItem.h"

namespace vantle {

// The login item as an XDG autostart entry, <config>/autostart/<desktop id>.desktop.
class XdgAutostartLoginItem final : public LoginItem {
public:
    XdgAutostartLoginItem(QString autostartDirectory, QString desktopId, QString executable);

    // $XDG_CONFIG_HOME/autostart
    static QString defaultDirectory();

    QString entryPath() const;

    bool isRegistered() const override;
    bool registerItem(QString* error) override;
    bool unregisterItem(QString* error) override;

private:
    QString m_directory;
    QString m_desktopId;
    QString m_executable;
};

} // namespace vantle
