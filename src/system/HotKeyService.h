#pragma once

#include "model/AppCommand.h"
#include "model/KeyCombo.h"
#include "platform/HotKeyRegistrar.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <functional>
#include <map>

namespace vantle {

// Holds the system-wide shortcuts of the enabled commands and turns their presses into commands.
// One instance, owned by the composition root and handed to the views that show the shortcuts.
class HotKeyService final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<AppCommand> unavailable READ unavailable NOTIFY unavailableChanged)
public:
    explicit HotKeyService(HotKeyRegistrar& registrar, QObject* parent = nullptr);

    // Receives every press of a registered shortcut.
    std::function<void(AppCommand)> onCommand;

    // Replaces every earlier registration with the system-wide commands among `commands`.
    void registerHotKeys(const QList<AppCommand>& commands);
    // A press of hot key `id`; ignored unless it is registered and onCommand is set.
    void handle(quint32 id);

    // The commands whose combination could not be claimed at the last registration, in command
    // order. A command switched off is neither registered nor unavailable.
    QList<AppCommand> unavailable() const;
    bool isUnavailable(AppCommand command) const { return m_unavailable.contains(command); }
    bool isRegistered(AppCommand command) const;

    // The key cap to show: the trigger the desktop reports it bound, else the fixed combination.
    QString keyCap(AppCommand command, KeyCapStyle style) const;

    // The hot-key id of a system-wide command: its position in the command order plus one.
    static quint32 hotKeyId(AppCommand command) { return static_cast<quint32>(command) + 1; }

signals:
    void unavailableChanged();
    void keyCapsChanged();

private:
    struct Registration {
        AppCommand command;
        HotKeyRegistrar::Reference reference;
    };

    void onRefused(quint32 id);
    void onTriggerDescribed(quint32 id, const QString& text);

    HotKeyRegistrar& m_registrar;
    std::map<quint32, Registration> m_registered;
    QList<AppCommand> m_unavailable;
    QHash<AppCommand, QString> m_triggers;
};

} // namespace vantle
