#include "fakes/LogCapture.h"
#include "platform/linux/PortalHotKeyRegistrar.h"
#include "support/DBusMock.h"
#include "system/HotKeyService.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace vantle;
using namespace vantle::testing;
using namespace Qt::StringLiterals;
using Command = AppCommand;

namespace {
const QString kFrontend = u"/usr/libexec/xdg-desktop-portal"_s;
const QString kBackend = u"org.freedesktop.impl.portal.desktop.vantletest"_s;
const QString kPortalPath = u"/org/freedesktop/portal/desktop"_s;
const QList<Command> kGlobal{Command::quitAllApps, Command::sleep, Command::restart,
                             Command::shutDown};
} // namespace

// The real portal frontend on a private bus, with a mocked desktop behind it that only it uses.
class TestPortalHotKeys : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<MockedBus> m_bus;
    QProcess m_frontend;
    QTemporaryDir m_portals;

    QList<QVariantList> backendCalls(const QString& path, const QString& method) const {
        return m_bus->calls(kBackend, path, method);
    }

    void startPortal(const QStringList& refuse) {
        if (!QFile::exists(kFrontend)) {
            QSKIP("xdg-desktop-portal is not installed");
        }
        QFile portal(m_portals.filePath(u"vantletest.portal"_s));
        QVERIFY(portal.open(QIODevice::WriteOnly));
        portal.write("[portal]\nDBusName=org.freedesktop.impl.portal.desktop.vantletest\n"
                     "Interfaces=org.freedesktop.impl.portal.GlobalShortcuts;\n"
                     "UseIn=vantletest\n");
        portal.close();
        QVERIFY(m_bus->start(
            QStringLiteral(VANTLE_PORTAL_BACKEND), kBackend,
            {u"--session"_s, u"-p"_s, uR"({"refuse": ["%1"]})"_s.arg(refuse.join(u"\", \""_s))}));

        // Only the mock: the portal directory and desktop name leave it no other choice.
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, m_bus->address());
        env.insert(u"XDG_DESKTOP_PORTAL_DIR"_s, m_portals.path());
        env.insert(u"XDG_CURRENT_DESKTOP"_s, u"vantletest"_s);
        // A request the frontend cannot make sense of ends it, and so fails the test.
        env.insert(u"G_DEBUG"_s, u"fatal-criticals"_s);
        m_frontend.setProcessEnvironment(env);
        m_frontend.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_frontend.setStandardOutputFile(QProcess::nullDevice());
        m_frontend.start(kFrontend, {u"--replace"_s});
        QTRY_VERIFY_WITH_TIMEOUT(m_bus->connection().interface()->isServiceRegistered(
                                     u"org.freedesktop.portal.Desktop"_s),
                                 20'000);
    }

    // Drives the mocked desktop: Press(id), Rebind(id, trigger).
    void desktop(const QString& method, const QVariantList& arguments) const {
        QDBusMessage call = QDBusMessage::createMethodCall(kBackend, kPortalPath,
                                                           u"org.freedesktop.DBus.Mock"_s, method);
        call.setArguments(arguments);
        QCOMPARE(m_bus->connection().call(call).type(), QDBusMessage::ReplyMessage);
    }
    void press(const QString& id) const { desktop(u"Press"_s, {id}); }

private slots:
    void init() {
        m_bus = std::make_unique<MockedBus>();
        VANTLE_SKIP_WITHOUT(*m_bus);
    }

    void cleanup() {
        if (m_frontend.state() != QProcess::NotRunning) {
            m_frontend.terminate();
            m_frontend.waitForFinished(10'000);
        }
        m_bus.reset();
    }

    void sessionsBindRefuseAndDeliverPresses() {
        startPortal({u"quitAllApps"_s});
        PortalHotKeyRegistrar registrar(m_bus->connection(), u"com.pelmark.vantle"_s);
        HotKeyService service(registrar);
        QList<Command> received;
        service.onCommand = [&](Command command) { received.append(command); };

        service.registerHotKeys(kGlobal);
        QTRY_COMPARE_WITH_TIMEOUT(service.unavailable(), QList<Command>{Command::quitAllApps},
                                  10'000);
        // The desktop's own words for what it bound, made from the preferred trigger we sent.
        QTRY_COMPARE(service.keyCap(Command::sleep, KeyCapStyle::linuxDesktop),
                     u"Desktop: CTRL+ALT+LOGO+s"_s);
        QCOMPARE(backendCalls(kPortalPath, u"BindShortcuts"_s).size(), 1);

        press(u"sleep"_s);
        press(u"shutDown"_s);
        QTRY_COMPARE(received, (QList<Command>{Command::sleep, Command::shutDown}));

        // The same set again keeps its session and what the desktop said about it.
        service.registerHotKeys(kGlobal);
        QCOMPARE(service.unavailable(), QList<Command>{Command::quitAllApps});
        QCOMPARE(service.keyCap(Command::sleep, KeyCapStyle::linuxDesktop),
                 u"Desktop: CTRL+ALT+LOGO+s"_s);

        // A changed set gets a session of its own; the old one is closed.
        const auto created = backendCalls(kPortalPath, u"CreateSession"_s);
        const QString first = created.value(0).value(1).value<QDBusObjectPath>().path();
        service.registerHotKeys({Command::restart});
        QTRY_COMPARE(backendCalls(kPortalPath, u"BindShortcuts"_s).size(), 2);
        QCOMPARE(backendCalls(kPortalPath, u"CreateSession"_s).size(), 2);
        QTRY_COMPARE(backendCalls(first, u"Close"_s).size(), 1);
        QTRY_COMPARE(service.keyCap(Command::restart, KeyCapStyle::linuxDesktop),
                     u"Desktop: CTRL+ALT+LOGO+r"_s);
        QVERIFY(service.unavailable().isEmpty());
        press(u"restart"_s);
        QTRY_COMPARE(received,
                     (QList<Command>{Command::sleep, Command::shutDown, Command::restart}));

        // The user has the last word on the keys; Vantle shows what the desktop now uses.
        desktop(u"Rebind"_s, {u"restart"_s, u"Meta+F9"_s});
        QTRY_COMPARE(service.keyCap(Command::restart, KeyCapStyle::linuxDesktop), u"Meta+F9"_s);
    }

    void withoutThePortalEveryShortcutIsUnavailable() {
        LogCapture log;
        PortalHotKeyRegistrar registrar(m_bus->connection(), u"com.pelmark.vantle"_s);
        HotKeyService service(registrar);
        service.registerHotKeys(kGlobal);
        QTRY_COMPARE_WITH_TIMEOUT(service.unavailable(), kGlobal, 10'000);
        QCOMPARE(log.count(u"offers no GlobalShortcuts portal"_s), 1);
        QCOMPARE(log.count(u"vantle --command"_s), 1);
        // Known from now on, without asking the bus again.
        service.registerHotKeys({Command::sleep});
        QCOMPARE(service.unavailable(), QList<Command>{Command::sleep});
    }
};

QTEST_GUILESS_MAIN(TestPortalHotKeys)
#include "tst_portalhotkeys.moc"
