#include "fakes/RemovalFixture.h"
#include "platform/linux/FileDefaultsStore.h"
#include "platform/linux/LinuxFileOps.h"
#include "platform/linux/ShellScriptRunner.h"
#include "platform/linux/XdgAutostartLoginItem.h"
#include "support/VirtualDesktop.h"
#include "ui/settings/AdvancedTab.h"
#include "ui/settings/RemovalSheet.h"

#include <QApplication>
#include <QClipboard>
#include <QDirIterator>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;
using vantle::testing::VirtualDesktop;

namespace {

const QString kRemovalFailed =
    u"Vantle could not change the power schedule, so nothing was removed. This usually means "
    u"the password prompt was cancelled."_s;

const QString kEvent = u"wake|11/17/98 07:30:00"_s;

bool writeFile(const QString& path, const QByteArray& contents, bool executable = false) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size() &&
           (!executable || file.setPermissions(file.permissions() | QFileDevice::ExeOwner));
}

// Every file and link under `folder`, relative to it.
QStringList filesUnder(const QString& folder) {
    QStringList files;
    QDirIterator it(folder, QDir::Files | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        files << QDir(folder).relativeFilePath(it.next());
    }
    files.sort();
    return files;
}

QString run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(120'000);
    return QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError());
}

} // namespace

// Removing Vantle from the Advanced tab on a real X display, with the real file operations, the
// real autostart entry and settings files in a private home folder, a copy installed there by
// the build's own install rules, and the real vantle-power on a private root behind a pkexec
// that stands in for polkit's.
class TestRemovalX11 : public QObject {
    Q_OBJECT

    VirtualDesktop& m_desktop;
    QTemporaryDir m_machine;
    QString m_home;
    QString m_tool;
    QString m_root;
    QString m_pkexec;
    QString m_rule;
    std::unique_ptr<RemovalFixture> f;

    QString home(const QString& relative) const { return m_home + u'/' + relative; }
    QString listing() const { return run(m_tool, {u"-g"_s, u"sched"_s}); }

public:
    explicit TestRemovalX11(VirtualDesktop& desktop)
        : m_desktop(desktop) {}

private slots:
    void initTestCase() {
        if (!m_desktop.isRunning()) {
            QSKIP(qPrintable(u"no virtual X display: "_s + m_desktop.error()));
        }
        QVERIFY(m_machine.isValid());
        m_pkexec = m_machine.filePath(u"bin/pkexec"_s);
        // Records that it was asked; 0 runs the command (as this user), 126 is a dismissed dialog.
        QVERIFY(writeFile(m_pkexec,
                          "#!/bin/sh\n"
                          "echo \"$*\" >> \"$(dirname \"$0\")/asked\"\n"
                          "[ \"$FAKE_PKEXEC_EXIT\" = 0 ] && exec \"$@\"\n"
                          "exit \"$FAKE_PKEXEC_EXIT\"\n",
                          true));
    }

    void init() {
        static int round = 0;
        const QString base = m_machine.filePath(QString::number(++round));
        m_home = base + u"/home"_s;
        m_root = base + u"/root"_s;
        m_rule = base + u"/sudoers.d/vantle-power"_s;
        m_tool = base + u"/tool/vantle-power"_s;
        QFile::remove(m_machine.filePath(u"bin/asked"_s));
        QVERIFY(writeFile(m_tool,
                          u"#!/bin/sh\nexec '%1' --root '%2' \"$@\"\n"_s
                              .arg(QStringLiteral(VANTLE_POWER_BINARY), m_root)
                              .toUtf8(),
                          true));
        QVERIFY(QDir().mkpath(m_root + u"/run/systemd/system"_s));
        QVERIFY(writeFile(m_root + u"/sys/class/rtc/rtc0/wakealarm"_s, "0\n"));
        qputenv("HOME", m_home.toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", home(u".config"_s).toLocal8Bit());
        qputenv("XDG_CACHE_HOME", home(u".cache"_s).toLocal8Bit());
        qputenv("XDG_STATE_HOME", home(u".local/state"_s).toLocal8Bit());
        qputenv("XDG_DATA_HOME", home(u".local/share"_s).toLocal8Bit());

        // A copy installed into the home folder by the build's install rules.
        const QString installed =
            run(QStringLiteral(VANTLE_CMAKE), {u"--install"_s, QStringLiteral(VANTLE_BUILD_DIR),
                                               u"--prefix"_s, home(u".local"_s)});
        QVERIFY2(QFile::exists(home(u".local/share/vantle/install_manifest.txt"_s)),
                 qPrintable(installed));

        f = std::make_unique<RemovalFixture>();
        Platform& platform = f->platform;
        platform.files = std::make_unique<LinuxFileOps>();
        platform.installation =
            AppInstallation::detect({}, home(u".local/bin"_s), QDir::homePath(), *platform.files);
        QCOMPARE(platform.installation.kind, AppInstallation::Kind::manifest);
        platform.scripts = std::make_unique<ShellScriptRunner>(m_pkexec);
        platform.schedulerTool = PowerSchedulerTool::linuxTool(QFileInfo(m_tool).absolutePath());
        platform.schedulerTool.ruleFile = m_rule;
        platform.loginItem = std::make_unique<XdgAutostartLoginItem>(
            XdgAutostartLoginItem::defaultDirectory(), u"com.pelmark.vantle"_s,
            home(u".local/bin/vantle"_s));
        QVERIFY(platform.loginItem->registerItem());
        platform.defaults = std::make_unique<FileDefaultsStore>(
            FileDefaultsStore::defaultDirectory(), u"com.pelmark.vantle"_s, *platform.clock);
        QVERIFY(writeFile(home(u".config/vantle/com.quorel.vantle.json"_s), "{}"));
        QVERIFY(writeFile(home(u".cache/vantle/icons/a.png"_s), "png"));
        QVERIFY(writeFile(home(u".local/state/vantle/last-run"_s), "1"));
        f->build();
        f->settings->setIdleQuitEnabled(true);
    }

    void cleanup() { f.reset(); }

    void removal_data() {
        QTest::addColumn<bool>("privileged");
        QTest::addColumn<QString>("pkexecExit");
        QTest::newRow("nothing privileged: no prompt") << false << u"1"_s;
        QTest::newRow("events and rule, password given") << true << u"0"_s;
        QTest::newRow("prompt dismissed: everything stays") << true << u"126"_s;
    }
    void removal() {
        QFETCH(bool, privileged);
        QFETCH(QString, pkexecExit);
        qputenv("FAKE_PKEXEC_EXIT", pkexecExit.toLocal8Bit());
        if (privileged) {
            QCOMPARE(run(m_tool, {u"schedule"_s, u"wake"_s, u"11/17/98 07:30:00"_s}), QString());
            f->settings->setPmsetRegistered({kEvent});
            QVERIFY(writeFile(m_rule, "rule\n"));
        }
        f->platform.defaults->flush();
        const QStringList before = filesUnder(m_home);
        QVERIFY(before.contains(u".config/autostart/com.pelmark.vantle.desktop"_s));
        QVERIFY(before.contains(u".config/vantle/com.pelmark.vantle.json"_s));
        QVERIFY(before.contains(u".local/bin/vantle"_s));

        AdvancedTab tab(*f->context);
        tab.show();
        QVERIFY(QTest::qWaitForWindowExposed(&tab));
        tab.copyButton()->click();
        QTRY_VERIFY(QApplication::clipboard()->text().contains(u"System Idle (all apps): ON"_s));

        tab.removeButton()->click();
        QPointer<RemovalSheet> sheet = tab.removalSheet();
        QVERIFY(sheet);
        QVERIFY(QTest::qWaitForWindowExposed(sheet));
        sheet->removeButton()->click();
        const bool dismissed = pkexecExit == u"126"_s;
        if (dismissed) {
            QTRY_COMPARE(sheet->errorText(), kRemovalFailed);
        } else {
            QTRY_COMPARE(f->removedCount, 1);
        }
        QCOMPARE(QFile::exists(m_machine.filePath(u"bin/asked"_s)), privileged);

        f.reset();
        QStringList after = filesUnder(m_home);
        // Written by D-Bus autolaunch on this private display, not by Vantle.
        after.removeIf([](const QString& file) { return file.startsWith(u".dbus/"_s); });
        if (dismissed) {
            QCOMPARE(after, before);
            QVERIFY(QFile::exists(m_rule));
            QVERIFY(listing().contains(u"wake at 11/17/2098 07:30:00 by 'vantle'"_s));
            return;
        }
        qInfo().noquote() << "deleted under the test home:\n " << before.join(u"\n  "_s);
        QVERIFY2(after.isEmpty(), qPrintable(after.join(u", "_s)));
        QVERIFY(!QFile::exists(m_rule));
        QVERIFY(!listing().contains(u"by 'vantle'"_s));
    }
};

int main(int argc, char* argv[]) {
    // The display has to exist before the application connects to it.
    VirtualDesktop desktop;
    desktop.useForThisProcess();
    QApplication app(argc, argv);
    TestRemovalX11 test(desktop);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_removal_x11.moc"
