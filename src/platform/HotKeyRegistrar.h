#pragma once

#include "model/KeyCombo.h"

#include <QObject>
#include <QString>
#include <optional>

namespace vantle {

// The desktop's system-wide hot keys. Every call is made on the main thread, and every signal
// arrives there.
class HotKeyRegistrar : public QObject {
    Q_OBJECT
public:
    using Reference = quint64;

    struct Request {
        quint32 id = 0;
        // A stable name the desktop may show or store (the command's raw value).
        QString name;
        KeyCombo combo;
        // What the shortcut does, for desktops that list the shortcuts they grant.
        QString description;
    };

    using QObject::QObject;
    ~HotKeyRegistrar() override = default;

    // Claims `request.combo` for `request.id`. Returns the registration's reference, or nothing
    // when it is refused now (another program holds it, the key does not exist on this keyboard,
    // the desktop offers no hot keys at all). A backend that learns only later whether it got the
    // keys accepts now and reports a refusal through refused().
    virtual std::optional<Reference> registerHotKey(const Request& request) = 0;
    // Releases a registration; an unknown reference is ignored.
    virtual void unregisterHotKey(Reference reference) = 0;
    // Closes a round of register and unregister calls. Backends that hand the whole set to the
    // desktop at once do it here; the others need nothing.
    virtual void commit() {}

signals:
    // The combination registered for `id` was pressed.
    void pressed(quint32 id);
    // A registration accepted earlier does not hold its combination after all. The receiver
    // still releases the reference.
    void refused(quint32 id);
    // The desktop bound `id` to this trigger, in its own words (the user may have chosen it).
    void triggerDescribed(quint32 id, const QString& text);
};

} // namespace vantle
