#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

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

    QString settingsDir() const { return m_home.path() + QStringLiteral("/config/vantle"); }

    struct Result {
        int exitCode;
        QString out;
        QString err;
    };

    Result vantle(const QStringList& arguments, bool display = true) const {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_home.path() + QStringLiteral("/config"));
        env.insert(QStringLiteral("LANG"), QStringLiteral("C.UTF-8"));
        env.remove(QStringLiteral("DISPLAY"));
        env.remove(QStringLiteral("WAYLAND_DISPLAY"));
        if (display) {
            env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        } else {
            env.remove(QStringLiteral("QT_QPA_PLATFORM"));
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
        QFile file(settingsDir() + QLatin1Char('/') + domain + QStringLiteral(".json"));
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

    void versionAndHelpNeedNoDisplay() {
        const Result version = vantle({QStringLiteral("--version")}, false);
        QCOMPARE(version.exitCode, 0);
        QCOMPARE(version.out.trimmed(),
                 QStringLiteral("Vantle " VANTLE_VERSION " (" VANTLE_BUILD_NUMBER ")"));

        const Result help = vantle({QStringLiteral("--help")}, false);
        QCOMPARE(help.exitCode, 0);
        QVERIFY(help.out.contains(QStringLiteral("--diagnostics")));
    }

    void refusesToStartWithoutADisplayAndSaysWhy() {
        const Result result = vantle({}, false);
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.err.contains(QStringLiteral("Vantle: no graphical display")));
    }

    void unknownOptionIsAnError() {
        const Result result = vantle({QStringLiteral("--frobnicate")});
        QVERIFY(result.exitCode != 0);
        QVERIFY(result.err.contains(QStringLiteral("frobnicate")));
    }

    void diagnosticsOfAFreshInstallWritesNothing() {
        const Result result = vantle({QStringLiteral("--diagnostics")}, false);
        QCOMPARE(result.exitCode, 0);
        QStringList lines = result.out.split(QLatin1Char('\n'));
        QCOMPARE(lines.takeLast(), QString()); // the report, then one line feed
        QVERIFY(lines.at(0).startsWith(QStringLiteral("Vantle Diagnostics — ")));
        QCOMPARE(lines.at(1), QStringLiteral("Version " VANTLE_VERSION " (" VANTLE_BUILD_NUMBER
                                             ") · com.pelmark.vantle"));
        QVERIFY(lines.at(2).startsWith(QStringLiteral("Linux ")));
        QCOMPARE(lines.at(3), QStringLiteral("Notifications: not determined"));
        QCOMPARE(lines.mid(4).join(QLatin1Char('|')),
                 QStringLiteral("|Per-App Rules (0)|  none||System Idle (all apps): off|"
                                "Warning: notification, 60s grace|Exclusions (0): none|"
                                "Protect menu bar apps: yes|Show background apps: no|"
                                "Launch at login: no|Show in Dock: no||Schedules (0)|  none|"
                                "vantle-power always allow: no|"
                                "Schedule warning: notification, 60s grace||"
                                "Shortcuts off (0): none"));
        QVERIFY(!QDir(settingsDir()).exists());
    }

    // The report shows what the app would load, legacy settings included, without migrating.
    void diagnosticsReadsRealSettingsAndLegacyOnesButChangesNothing() {
        writeSettings(QStringLiteral("com.pelmark.vantle"), kConfigured);
        writeSettings(QStringLiteral("com.quorel.vantle"), kLegacy);
        const auto before = snapshotSettings();

        const Result result = vantle({QStringLiteral("--diagnostics")}, false);
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.out.contains(
            QStringLiteral("\n  Files (org.gnome.Nautilus) — hide after 5 min\n")));
        QVERIFY(result.out.contains(QStringLiteral("\nSystem Idle (all apps): ON at 20 min\n")));
        QVERIFY(result.out.contains(QStringLiteral("\nWarning: window, 60s grace\n")));
        QVERIFY(result.out.contains(QStringLiteral("\nShortcuts off (1): Sleep\n")));
        QCOMPARE(snapshotSettings(), before);
    }

    void diagnosticsOfACorruptFileShowsDefaultsAndLeavesTheFile() {
        writeSettings(QStringLiteral("com.pelmark.vantle"), "{\"idleQuitEnabled\": tru");
        const auto before = snapshotSettings();
        const Result result = vantle({QStringLiteral("--diagnostics")}, false);
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.out.contains(QStringLiteral("System Idle (all apps): off")));
        QVERIFY(result.err.contains(QStringLiteral("is unreadable")));
        QCOMPARE(snapshotSettings(), before);
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
