#pragma once

#include "platform/HotKeyRegistrar.h"

#include <QDBusConnection>
#include <QHash>
#include <QSet>
#include <QStringList>
#include <functional>
#include <map>

class QDBusMessage;

namespace vantle {

// Hot keys through the desktop portal's GlobalShortcuts interface, the only way a Wayland client
// gets them. The desktop, not the app, decides: it may ask the user, bind other keys than the ones
// preferred, or refuse some. One portal session holds one bound set, so a changed set gets a new
// session. Without the portal every shortcut is refused, and the log says what to do instead.
class PortalHotKeyRegistrar final : public HotKeyRegistrar {
    Q_OBJECT
public:
    PortalHotKeyRegistrar(QDBusConnection bus, QString appId, QObject* parent = nullptr);
    ~PortalHotKeyRegistrar() override;

    std::optional<Reference> registerHotKey(const Request& request) override;
    void unregisterHotKey(Reference reference) override;
    void commit() override;

    // The combination in the shortcut notation the portal takes, e.g. "CTRL+ALT+LOGO+q".
    static QString preferredTrigger(const KeyCombo& combo);

private slots:
    void onActivated(const QDBusMessage& message);
    void onShortcutsChanged(const QDBusMessage& message);

private:
    using Results = QVariantMap;
    using ResponseHandler = std::function<void(uint response, const Results& results)>;

    enum class Portal { unknown, checking, present, missing };

    void checkPortal();
    void portalMissing(const QString& reason);
    void registerAppId();
    void startSession();
    void bindShortcuts();
    void closeSession();
    void refuseAll(const QString& reason);
    void emitRefused(const QList<quint32>& ids);
    void applyBoundShortcuts(const QVariant& shortcuts, bool refuseMissing);
    // Calls a portal method that answers through a Request object's Response signal.
    void callWithResponse(const QString& method, QList<QVariant> arguments, QVariantMap options,
                          ResponseHandler handler);
    std::optional<quint32> idForName(const QString& name) const;

    QDBusConnection m_bus;
    QString m_appId;
    Portal m_portal = Portal::unknown;
    bool m_appIdRegistered = false;
    std::map<Reference, Request> m_requests;
    Reference m_nextReference = 1;
    // The set the current session was made for, and what the desktop answered.
    QStringList m_sessionNames;
    QString m_session;
    bool m_bound = false;
    QSet<quint32> m_refused;
    QHash<quint32, QString> m_triggers;
    // Answers that belong to an older round are dropped.
    quint64 m_round = 0;
    quint64 m_nextToken = 0;
};

} // namespace vantle
