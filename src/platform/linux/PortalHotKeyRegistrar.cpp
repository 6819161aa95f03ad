#include "platform/linux/PortalHotKeyRegistrar.h"

#include "platform/Log.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QPointer>
#include <algorithm>

namespace vantle {

namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kShortcuts = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString kRequest = QStringLiteral("org.freedesktop.portal.Request");
const QString kSession = QStringLiteral("org.freedesktop.portal.Session");
const QString kRegistry = QStringLiteral("org.freedesktop.host.portal.Registry");

constexpr uint kResponseSuccess = 0;
constexpr uint kResponseCancelled = 1;

// One shortcut as the portal takes and returns it: an id and its properties.
struct PortalShortcut {
    QString id;
    QVariantMap properties;
};

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut) {
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut) {
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

} // namespace

} // namespace vantle

Q_DECLARE_METATYPE(vantle::PortalShortcut)

namespace vantle {

namespace {

QList<PortalShortcut> shortcutsFrom(const QVariant& value) {
    QList<PortalShortcut> shortcuts;
    if (value.canConvert<QDBusArgument>()) {
        value.value<QDBusArgument>() >> shortcuts;
    } else if (value.canConvert<QList<PortalShortcut>>()) {
        shortcuts = value.value<QList<PortalShortcut>>();
    }
    return shortcuts;
}

// Receives the Response of one portal Request object, then goes away.
class PortalResponse final : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<void(uint, const QVariantMap&)>;

    PortalResponse(QDBusConnection bus, QString path, Handler handler, QObject* parent)
        : QObject(parent)
        , m_bus(std::move(bus))
        , m_handler(std::move(handler)) {
        listen(std::move(path));
    }

    // Older portals answer on a path of their own choosing.
    void moveTo(const QString& path) {
        if (path != m_path) {
            m_bus.disconnect(kService, m_path, kRequest, QStringLiteral("Response"), this,
                             SLOT(onResponse(uint, QVariantMap)));
            listen(path);
        }
    }

    void fail() { finish(2, {}); }

public slots:
    void onResponse(uint response, const QVariantMap& results) { finish(response, results); }

private:
    void listen(QString path) {
        m_path = std::move(path);
        m_bus.connect(kService, m_path, kRequest, QStringLiteral("Response"), this,
                      SLOT(onResponse(uint, QVariantMap)));
    }

    void finish(uint response, const QVariantMap& results) {
        if (!m_handler) {
            return;
        }
        const Handler handler = std::exchange(m_handler, {});
        m_bus.disconnect(kService, m_path, kRequest, QStringLiteral("Response"), this,
                         SLOT(onResponse(uint, QVariantMap)));
        deleteLater();
        handler(response, results);
    }

    QDBusConnection m_bus;
    QString m_path;
    Handler m_handler;
};

} // namespace

PortalHotKeyRegistrar::PortalHotKeyRegistrar(QDBusConnection bus, QString appId, QObject* parent)
    : HotKeyRegistrar(parent)
    , m_bus(std::move(bus))
    , m_appId(std::move(appId)) {
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    m_bus.connect(kService, kPath, kShortcuts, QStringLiteral("Activated"), this,
                  SLOT(onActivated(QDBusMessage)));
    m_bus.connect(kService, kPath, kShortcuts, QStringLiteral("ShortcutsChanged"), this,
                  SLOT(onShortcutsChanged(QDBusMessage)));
}

PortalHotKeyRegistrar::~PortalHotKeyRegistrar() {
    closeSession();
}

QString PortalHotKeyRegistrar::preferredTrigger(const KeyCombo& combo) {
    QStringList parts;
    if (combo.has(KeyCombo::control)) {
        parts << QStringLiteral("CTRL");
    }
    if (combo.has(KeyCombo::option)) {
        parts << QStringLiteral("ALT");
    }
    if (combo.has(KeyCombo::shift)) {
        parts << QStringLiteral("SHIFT");
    }
    if (combo.has(KeyCombo::command)) {
        parts << QStringLiteral("LOGO");
    }
    parts << (combo.character == QChar(KeyCombo::kReturn) ? QStringLiteral("Return")
                                                          : QString(combo.character.toLower()));
    return parts.join(u'+');
}

std::optional<HotKeyRegistrar::Reference>
PortalHotKeyRegistrar::registerHotKey(const Request& request) {
    if (m_portal == Portal::missing) {
        return std::nullopt;
    }
    const Reference reference = m_nextReference++;
    m_requests.emplace(reference, request);
    return reference;
}

void PortalHotKeyRegistrar::unregisterHotKey(Reference reference) {
    m_requests.erase(reference);
}

void PortalHotKeyRegistrar::commit() {
    QStringList names;
    for (const auto& [reference, request] : m_requests) {
        names << request.name;
    }
    names.sort();
    if (names == m_sessionNames && !m_session.isEmpty()) {
        if (m_bound) {
            // The same set again: the session stands; tell the caller what it already holds.
            emitRefused(QList<quint32>(m_refused.cbegin(), m_refused.cend()));
            for (auto it = m_triggers.cbegin(); it != m_triggers.cend(); ++it) {
                emit triggerDescribed(it.key(), it.value());
            }
        }
        return;
    }
    ++m_round;
    closeSession();
    m_sessionNames = names;
    if (names.isEmpty()) {
        return;
    }
    switch (m_portal) {
    case Portal::missing:
        refuseAll({});
        return;
    case Portal::unknown:
        checkPortal();
        return;
    case Portal::checking:
        return; // the check goes on with the newest set
    case Portal::present:
        startSession();
        return;
    }
}

void PortalHotKeyRegistrar::checkPortal() {
    m_portal = Portal::checking;
    QDBusMessage get = QDBusMessage::createMethodCall(
        kService, kPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get << kShortcuts << QStringLiteral("version");
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(get), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* w) {
        w->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *w;
        if (reply.isError()) {
            portalMissing(reply.error().message());
            return;
        }
        m_portal = Portal::present;
        registerAppId();
    });
}

void PortalHotKeyRegistrar::portalMissing(const QString& reason) {
    m_portal = Portal::missing;
    logLine(QStringLiteral("system-wide shortcuts are unavailable: this desktop offers no "
                           "GlobalShortcuts portal (%1). Bind \"vantle --command quitAllApps\" "
                           "(or sleep, restart, shutDown) in the desktop's own keyboard settings "
                           "instead.")
                .arg(reason));
    refuseAll({});
}

void PortalHotKeyRegistrar::registerAppId() {
    if (m_appIdRegistered) {
        startSession();
        return;
    }
    // Newer portals identify a host app by this registration and refuse an empty id; older ones
    // have no registry, which is fine.
    QDBusMessage call =
        QDBusMessage::createMethodCall(kService, kPath, kRegistry, QStringLiteral("Register"));
    call << m_appId << QVariantMap();
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* w) {
        w->deleteLater();
        m_appIdRegistered = true;
        startSession();
    });
}

void PortalHotKeyRegistrar::startSession() {
    if (m_sessionNames.isEmpty()) {
        return;
    }
    const quint64 round = m_round;
    const QString sessionToken = QStringLiteral("vantle_session_%1").arg(++m_nextToken);
    callWithResponse(
        QStringLiteral("CreateSession"), {},
        {{QStringLiteral("session_handle_token"), sessionToken}},
        [this, round](uint response, const Results& results) {
            if (round != m_round) {
                // Made for a set that changed meanwhile: let it go.
                const QString stale = results.value(QStringLiteral("session_handle")).toString();
                if (!stale.isEmpty()) {
                    m_bus.asyncCall(QDBusMessage::createMethodCall(kService, stale, kSession,
                                                                   QStringLiteral("Close")));
                }
                return;
            }
            const QVariant handle = results.value(QStringLiteral("session_handle"));
            m_session = handle.canConvert<QDBusObjectPath>()
                            ? handle.value<QDBusObjectPath>().path()
                            : handle.toString();
            if (response != kResponseSuccess || m_session.isEmpty()) {
                m_session.clear();
                refuseAll(QStringLiteral("the desktop refused a shortcut session (response %1)")
                              .arg(response));
                return;
            }
            bindShortcuts();
        });
}

void PortalHotKeyRegistrar::bindShortcuts() {
    QList<PortalShortcut> shortcuts;
    for (const auto& [reference, request] : m_requests) {
        shortcuts.append(
            {request.name,
             {{QStringLiteral("description"), request.description},
              {QStringLiteral("preferred_trigger"), preferredTrigger(request.combo)}}});
    }
    const quint64 round = m_round;
    callWithResponse(QStringLiteral("BindShortcuts"),
                     {QVariant::fromValue(QDBusObjectPath(m_session)),
                      QVariant::fromValue(shortcuts), QString()},
                     {}, [this, round](uint response, const Results& results) {
                         if (round != m_round) {
                             return;
                         }
                         if (response != kResponseSuccess) {
                             refuseAll(response == kResponseCancelled
                                           ? QStringLiteral("the shortcuts were declined")
                                           : QStringLiteral("the desktop could not bind the "
                                                            "shortcuts (response %1)")
                                                 .arg(response));
                             return;
                         }
                         m_bound = true;
                         applyBoundShortcuts(results.value(QStringLiteral("shortcuts")), true);
                     });
}

void PortalHotKeyRegistrar::applyBoundShortcuts(const QVariant& value, bool refuseMissing) {
    QSet<quint32> bound;
    for (const PortalShortcut& shortcut : shortcutsFrom(value)) {
        const auto id = idForName(shortcut.id);
        if (!id) {
            continue;
        }
        bound.insert(*id);
        const QString trigger =
            shortcut.properties.value(QStringLiteral("trigger_description")).toString();
        if (!trigger.isEmpty() && m_triggers.value(*id) != trigger) {
            m_triggers.insert(*id, trigger);
            emit triggerDescribed(*id, trigger);
        }
    }
    if (!refuseMissing) {
        return;
    }
    // A shortcut the desktop left out of its answer is not bound.
    QList<quint32> missing;
    for (const auto& [reference, request] : m_requests) {
        if (!bound.contains(request.id) && !m_refused.contains(request.id)) {
            missing.append(request.id);
        }
    }
    emitRefused(missing);
}

void PortalHotKeyRegistrar::closeSession() {
    if (!m_session.isEmpty()) {
        m_bus.asyncCall(
            QDBusMessage::createMethodCall(kService, m_session, kSession, QStringLiteral("Close")));
    }
    m_session.clear();
    m_sessionNames.clear();
    m_bound = false;
    m_refused.clear();
    m_triggers.clear();
}

void PortalHotKeyRegistrar::refuseAll(const QString& reason) {
    if (!reason.isEmpty()) {
        logLine(QStringLiteral("system-wide shortcuts are unavailable: %1").arg(reason));
    }
    QList<quint32> ids;
    for (const auto& [reference, request] : m_requests) {
        ids.append(request.id);
    }
    emitRefused(ids);
}

void PortalHotKeyRegistrar::callWithResponse(const QString& method, QList<QVariant> arguments,
                                             QVariantMap options, ResponseHandler handler) {
    const QString token = QStringLiteral("vantle_%1").arg(++m_nextToken);
    options.insert(QStringLiteral("handle_token"), token);
    // The request object's path is known in advance, so the answer cannot slip past before we
    // listen for it.
    QString sender = m_bus.baseService().mid(1);
    sender.replace(u'.', u'_');
    const QString path = kPath + QStringLiteral("/request/") + sender + u'/' + token;
    auto* response = new PortalResponse(m_bus, path, std::move(handler), this);

    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kShortcuts, method);
    arguments.append(options);
    call.setArguments(arguments);
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [method, response = QPointer<PortalResponse>(response)](QDBusPendingCallWatcher* w) {
                w->deleteLater();
                const QDBusPendingReply<QDBusObjectPath> reply = *w;
                if (!response) {
                    return;
                }
                if (reply.isError()) {
                    logLine(QStringLiteral("the shortcuts portal rejected %1: %2")
                                .arg(method, reply.error().message()));
                    response->fail();
                    return;
                }
                response->moveTo(reply.value().path());
            });
}

void PortalHotKeyRegistrar::emitRefused(const QList<quint32>& ids) {
    // Collected first: a receiver may unregister, which changes m_requests.
    for (const quint32 id : ids) {
        m_refused.insert(id);
        emit refused(id);
    }
}

std::optional<quint32> PortalHotKeyRegistrar::idForName(const QString& name) const {
    for (const auto& [reference, request] : m_requests) {
        if (request.name == name) {
            return request.id;
        }
    }
    return std::nullopt;
}

void PortalHotKeyRegistrar::onActivated(const QDBusMessage& message) {
    const QList<QVariant> arguments = message.arguments();
    if (arguments.size() < 2 || m_session.isEmpty() ||
        arguments.at(0).value<QDBusObjectPath>().path() != m_session) {
        return;
    }
    if (const auto id = idForName(arguments.at(1).toString())) {
        emit pressed(*id);
    }
}

void PortalHotKeyRegistrar::onShortcutsChanged(const QDBusMessage& message) {
    const QList<QVariant> arguments = message.arguments();
    if (arguments.size() < 2 || m_session.isEmpty() ||
        arguments.at(0).value<QDBusObjectPath>().path() != m_session) {
        return;
    }
    // The user changed the keys in the desktop's settings.
    applyBoundShortcuts(arguments.at(1), false);
}

} // namespace vantle

#include "PortalHotKeyRegistrar.moc"
