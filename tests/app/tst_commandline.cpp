#include "support/DBusMock.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
// Settings files as the app writes them; the rule list is stored as readable text.
const QByteArray kConfigured =
    "{\"idleQuitEnabled\": true, \"idleQuitTimeout\": 20, \"disabledShortcutIDs\": [\"sleep\"],"
    " \"appRules\": {\"utf8\": \"[{\\\"bundleID\\\":\\\"org.gnome.Nautilus\\\",\\\"name\\\":"
    "\\\"Files\\\",\\\"action\\\":\\\"hide\\\",\\\"timeoutMinutes\\\":5}]\"}}";
const QByteArray kLegacy = "{\"idleQuitTimeout\": 99, \"quitWarningStyle\": \"window\"}";
} // namespace

// Runs the real vantle binary with a settings folder of the test's own.
class TestCommandLine : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_home;

    QString settingsDir() const { return m_home.path() + u"/config/vantle"_s; }

    struct Result {
        int exitCode;
        QString out;
        QString err;
    };

    Result vantle(const QStringList& arguments, bool display = false,
                  const QString& busAddress = {}) const {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const QString& name : {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"QT_QPA_PLATFORM"_s}) {
            env.remove(name);
        }
        if (display) {
            env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        }
        env.insert(u"XDG_CONFIG_HOME"_s, m_home.path() + u"/config"_s);
        env.insert(u"LANG"_s, u"C.UTF-8"_s);
        if (!busAddress.isEmpty()) {
            env.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, busAddress);
        }
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(VANTLE_BINARY), arguments);
        if (!process.waitForFinished(30'000)) {
            process.kill();
            process.waitForFinished();
        }
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    void writeSettings(const QString& domain, const QByteArray& json) const {
        QDir().mkpath(settingsDir());
        QFile file(settingsDir() + u'/' + domain + u".json"_s);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(json);
    }

    QMap<QString, QByteArray> snapshotSettings() const {
        QMap<QString, QByteArray> files;
        const QDir dir(settingsDir());
        for (const QString& name : dir.entryList(QDir::Files | QDir::Hidden)) {
            QFile file(dir.filePath(name));
            if (file.open(QIODevice::ReadOnly)) {
                files.insert(name, file.readAll());
            }
        }
        return files;
    }

private slots:
    void init() { QDir(m_home.path()).removeRecursively(); }

    void options() {
        // --version and --help need no display; running the app does.
        Result result = vantle({u"--version"_s});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out, u"Vantle " VANTLE_VERSION " (" VANTLE_BUILD_NUMBER ")\n"_s);
        result = vantle({u"--help"_s});
        QVERIFY(result.exitCode == 0 && result.out.contains(u"--diagnostics"_s));
        result = vantle({});
        QVERIFY(result.exitCode == 1 && result.err.contains(u"Vantle: no graphical display"_s));
        result = vantle({u"--frobnicate"_s}, true);
        QVERIFY(result.exitCode == 1 && result.err.contains(u"frobnicate"_s));
        // Only the system-wide commands can be sent; the app-list ones need the open list.
        for (const QStringList& arguments :
             {QStringList{u"--command"_s, u"dance"_s}, QStringList{u"--command=focusSearch"_s}}) {
            result = vantle(arguments);
            QCOMPARE(result.exitCode, 2);
            QVERIFY2(result.err.contains(u"The commands are: quitAllApps, sleep, restart, "
                                         u"shutDown."_s),
                     qPrintable(result.err));
        }
    }

    // The report's layout is checked in tst_diagnostics; here it shows what the binary would load
    // (legacy settings included, a corrupt file as defaults) and changes nothing on disk.
    void diagnostics_data() {
        QTest::addColumn<QByteArray>("settings");
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QString>("err");
        QTest::newRow("fresh") << QByteArray()
                               << QStringList{u"Version " VANTLE_VERSION " (" VANTLE_BUILD_NUMBER
                                              ") · com.pelmark.vantle"_s,
                                              u"Shortcuts off (0): none"_s}
                               << QString();
        QTest::newRow("configured")
            << kConfigured
            << QStringList{u"  Files (org.gnome.Nautilus) — hide after 5 min"_s,
                           u"System Idle (all apps): ON at 20 min"_s,
                           u"Warning: window, 60s grace"_s, u"Shortcuts off (1): Sleep"_s}
            << QString();
        QTest::newRow("corrupt") << QByteArray("{\"idleQuitEnabled\": tru")
                                 << QStringList{u"System Idle (all apps): off"_s}
                                 << u"is unreadable"_s;
    }
    void diagnostics() {
        QFETCH(QByteArray, settings);
        QFETCH(QStringList, lines);
        QFETCH(QString, err);
        if (!settings.isEmpty()) {
            writeSettings(u"com.pelmark.vantle"_s, settings);
            writeSettings(u"com.quorel.vantle"_s, kLegacy);
        }
        const auto before = snapshotSettings();
        const Result result = vantle({u"--diagnostics"_s});
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.out.startsWith(u"Vantle Diagnostics — "_s));
        QVERIFY(result.out.contains(u"\nLinux "_s));
        for (const QString& line : lines) {
            QVERIFY2(result.out.contains(u'\n' + line + u'\n'), qPrintable(line));
        }
        QVERIFY2(result.err.contains(err), qPrintable(result.err));
        QCOMPARE(snapshotSettings(), before);
        QCOMPARE(QDir(settingsDir()).exists(), !settings.isEmpty());
    }

    // The report carries the status the running app would act on.
    void diagnosticsCarriesTheNotificationStatus() {
        vantle::testing::MockedBus bus;
        VANTLE_SKIP_WITHOUT(bus);
        QVERIFY(
            vantle({u"--diagnostics"_s}, false, bus.address())
                .out.contains(u"\nNotifications: DENIED (warnings fall back to the window)\n"_s));
        QVERIFY(bus.start(u"notification_daemon"_s, u"org.freedesktop.Notifications"_s,
                          {u"-p"_s, uR"({"capabilities": "body actions"})"_s}));
        QVERIFY(vantle({u"--diagnostics"_s}, false, bus.address())
                    .out.contains(u"\nNotifications: authorized\n"_s));
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
