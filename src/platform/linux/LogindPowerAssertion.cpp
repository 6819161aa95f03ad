#include "platform/linux/LogindPowerAssertion.h"

#include "platform/Log.h"

#include <QDBusError>
#include <QDBusMessage>

namespace vantle {

namespace {

constexpr int kTimeoutMs = 2'000;
// GsmInhibitorFlag: inhibit the session being marked idle.
constexpr uint kGnomeInhibitIdle = 8;

const QString kGnomeService = QStringLiteral("org.gnome.SessionManager");
const QString kGnomePath = QStringLiteral("/org/gnome/SessionManager");
const QString kPmService = QStringLiteral("org.freedesktop.PowerManagement");
const QString kPmPath = QStringLiteral("/org/freedesktop/PowerManagement/Inhibit");
const QString kPmInterface = QStringLiteral("org.freedesktop.PowerManagement.Inhibit");

QDBusMessage call(QDBusConnection& bus, const QString& service, const QString& path,
                  const QString& interface, const QString& method, const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return bus.call(message, QDBus::Block, kTimeoutMs);
}

bool isAbsent(const QDBusMessage& reply) {
    const QString name = reply.errorName();
    return name == QDBusError::errorString(QDBusError::ServiceUnknown) ||
           name == QDBusError::errorString(QDBusError::UnknownObject) ||
           name == QDBusError::errorString(QDBusError::UnknownMethod) ||
           name == QDBusError::errorString(QDBusError::UnknownInterface) ||
           name == QDBusError::errorString(QDBusError::Disconnected);
}

std::optional<uint> cookieOf(const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        return std::nullopt;
    }
    return reply.arguments().constFirst().toUInt();
}

} // namespace

LogindPowerAssertion::LogindPowerAssertion(QDBusConnection systemBus, QDBusConnection sessionBus)
    : m_systemBus(std::move(systemBus))
    , m_sessionBus(std::move(sessionBus)) {}

LogindPowerAssertion::~LogindPowerAssertion() {
    release();
}

bool LogindPowerAssertion::isHeld() const {
    return m_logindFd.isValid() || m_desktopCookie.has_value();
}

bool LogindPowerAssertion::acquire(const QString& reason) {
    if (isHeld()) {
        return true;
    }
    inhibitLogind(reason);
    inhibitDesktop(reason);
    return isHeld();
}

bool LogindPowerAssertion::inhibitLogind(const QString& reason) {
    const QDBusMessage reply =
        call(m_systemBus, QStringLiteral("org.freedesktop.login1"),
             QStringLiteral("/org/freedesktop/login1"),
             QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"),
             {QStringLiteral("idle"), QStringLiteral("Vantle"), reason, QStringLiteral("block")});
    QDBusUnixFileDescriptor fd;
    if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()) {
        fd = reply.arguments().constFirst().value<QDBusUnixFileDescriptor>();
    }
    if (!fd.isValid()) {
        // A scheduled action retries every half minute; one line per failing stretch is enough.
        if (!m_reportedLogindFailure) {
            m_reportedLogindFailure = true;
            logLine(QStringLiteral("could not keep the machine awake through logind: %1")
                        .arg(reply.errorMessage().isEmpty() ? reply.errorName()
                                                            : reply.errorMessage()));
        }
        return false;
    }
    m_reportedLogindFailure = false;
    m_logindFd = fd;
    return true;
}

void LogindPowerAssertion::inhibitDesktop(const QString& reason) {
    if (m_desktop == Desktop::unknown || m_desktop == Desktop::gnome) {
        const QDBusMessage reply =
            call(m_sessionBus, kGnomeService, kGnomePath, kGnomeService, QStringLiteral("Inhibit"),
                 {QStringLiteral(VANTLE_BUNDLE_ID), 0u, reason, kGnomeInhibitIdle});
        if ((m_desktopCookie = cookieOf(reply))) {
            m_desktop = Desktop::gnome;
            return;
        }
        if (m_desktop == Desktop::gnome || !isAbsent(reply)) {
            return; // present but refusing: try again next time
        }
    }
    if (m_desktop == Desktop::unknown || m_desktop == Desktop::powerManagement) {
        const QDBusMessage reply =
            call(m_sessionBus, kPmService, kPmPath, kPmInterface, QStringLiteral("Inhibit"),
                 {QStringLiteral("Vantle"), reason});
        if ((m_desktopCookie = cookieOf(reply))) {
            m_desktop = Desktop::powerManagement;
            return;
        }
        if (m_desktop == Desktop::powerManagement || !isAbsent(reply)) {
            return;
        }
    }
    if (m_desktop == Desktop::unknown) {
        m_desktop = Desktop::none;
        logLine(QStringLiteral("this desktop offers no idle inhibitor of its own "
                               "(org.gnome.SessionManager or org.freedesktop.PowerManagement)"));
    }
}

void LogindPowerAssertion::release() {
    // Closing our copy of the descriptor is what ends logind's inhibitor.
    m_logindFd = QDBusUnixFileDescriptor();
    if (!m_desktopCookie) {
        return;
    }
    if (m_desktop == Desktop::gnome) {
        call(m_sessionBus, kGnomeService, kGnomePath, kGnomeService, QStringLiteral("Uninhibit"),
             {*m_desktopCookie});
    } else if (m_desktop == Desktop::powerManagement) {
        call(m_sessionBus, kPmService, kPmPath, kPmInterface, QStringLiteral("UnInhibit"),
             {*m_desktopCookie});
    }
    m_desktopCookie.reset();
}

} // namespace vantle
