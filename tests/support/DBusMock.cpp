#include "support/DBusMock.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QTest>

namespace vantle::testing {

namespace {

const QString kPython = QStringLiteral("/usr/bin/python3");

std::unique_ptr<QProcess> runDBusMock(const QString& busAddress, const QStringList& arguments) {
    auto mock = std::make_unique<QProcess>();
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress);
    env.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), busAddress);
    mock->setProcessEnvironment(env);
    mock->setStandardOutputFile(QProcess::nullDevice());
    mock->start(kPython, QStringList{QStringLiteral("-m"), QStringLiteral("dbusmock")} + arguments);
    return mock;
}

} // namespace

bool hasDBusMock() {
    return QProcess::execute(kPython, {QStringLiteral("-c"), QStringLiteral("import dbusmock")}) ==
           0;
}

std::unique_ptr<QProcess> startDBusMock(const QString& busAddress, const QString& templateName,
                                        const QStringList& extraArguments) {
    QStringList arguments = extraArguments.filter(QStringLiteral("--session"));
    arguments << QStringLiteral("--template") << templateName;
    for (const QString& argument : extraArguments) {
        if (argument != QLatin1String("--session")) {
            arguments << argument;
        }
    }
    return runDBusMock(busAddress, arguments);
}

std::unique_ptr<QProcess> startDBusMockObject(const QString& busAddress, const QString& name,
                                              const QString& path, const QString& interface) {
    return runDBusMock(busAddress, {QStringLiteral("--session"), name, path, interface});
}

QList<QVariantList> mockedCalls(QDBusConnection bus, const QString& service, const QString& path,
                                const QString& method) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, path, QStringLiteral("org.freedesktop.DBus.Mock"),
                                       QStringLiteral("GetMethodCalls"));
    call << method;
    const QDBusMessage reply = bus.call(call, QDBus::Block, 5'000);
    QList<QVariantList> result;
    if (reply.type() != QDBusMessage::ReplyMessage) {
        return result;
    }
    const auto log = reply.arguments().constFirst().value<QDBusArgument>();
    log.beginArray();
    while (!log.atEnd()) {
        quint64 time = 0;
        QVariantList arguments;
        log.beginStructure();
        log >> time >> arguments;
        log.endStructure();
        result.append(arguments);
    }
    log.endArray();
    return result;
}

MockedBus::~MockedBus() {
    for (const auto& mock : m_mocks) {
        mock->terminate();
        mock->waitForFinished(5'000);
    }
}

QString MockedBus::unavailable() const {
    if (!m_bus.isRunning()) {
        return m_bus.error();
    }
    if (!hasDBusMock()) {
        return QStringLiteral("python3-dbusmock is not installed for /usr/bin/python3");
    }
    return {};
}

bool MockedBus::start(const QString& templateName, const QString& service,
                      const QStringList& extraArguments) {
    m_mocks.push_back(startDBusMock(address(), templateName, extraArguments));
    const QDBusConnection bus = connection();
    return QTest::qWaitFor([&] { return bus.interface()->isServiceRegistered(service).value(); },
                           20'000);
}

} // namespace vantle::testing
