#pragma once

#include <QObject>

namespace vantle {

// Whether the desktop has somewhere to show a tray icon: a StatusNotifierItem host or an XEmbed
// system tray. Qt settles on one tray protocol the first time a tray icon is made and never
// reconsiders, so the icon must not be created before isAvailable() is true.
class TrayHost : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    ~TrayHost() override = default;

    // True while some tray can take an icon. False where the desktop has none (many Wayland
    // compositors, a bare window manager) or before the panel has started.
    virtual bool isAvailable() const = 0;
    // True when the tray is a StatusNotifierItem host, which draws (and may recolour) an icon
    // it finds by name; an XEmbed tray shows the pixels it is given.
    virtual bool hasStatusNotifierHost() const = 0;

signals:
    // A tray appeared or the last one went away.
    void availabilityChanged(bool available);
};

} // namespace vantle
