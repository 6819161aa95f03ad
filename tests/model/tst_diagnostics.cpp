#include "fakes/FakeBundleInfo.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppSettings.h"
#include "model/DiagnosticsReport.h"
#include "model/ProductTexts.h"

#include <QLocale>
#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;

namespace {

const QString kFreshReport = u"Vantle Diagnostics — %1\n"
                             "Version 2.3.1 (231) · com.pelmark.vantle\n"
                             "Linux Version 15.1 (Build 24B83) · arm64\n"
                             "Notifications: not determined\n"
                             "\n"
                             "Per-App Rules (0)\n"
                             "  none\n"
                             "\n"
                             "System Idle (all apps): off\n"
                             "Warning: notification, 60s grace\n"
                             "Exclusions (0): none\n"
                             "Protect menu bar apps: yes\n"
                             "Show background apps: no\n"
                             "Launch at login: no\n"
                             "Show in Dock: no\n"
                             "\n"
                             "Schedules (0)\n"
                             "  none\n"
                             "vantle-power always allow: no\n"
                             "Schedule warning: notification, 60s grace\n"
                             "\n"
                             "Shortcuts off (0): none"_s;

} // namespace

class TestDiagnostics : public QObject {
    Q_OBJECT

    MemoryDefaultsStore store;
    FakeBundleInfo bundle;
    ManualClock clock;

    QString date() const { return mediumDateTime(clock.now(), QLocale()); }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void mediumDate() {
        // Newer locale data puts a narrow no-break space before AM; either spacing is fine.
        QString text = date();
        text.replace(QChar(0x202F), u' ');
        QCOMPARE(text, u"Nov 16, 2026 at 9:00 AM"_s);
        // The weekday is dropped wherever the locale puts it, with its separator.
        const QString german =
            mediumDateTime(clock.now(), QLocale(QLocale::German, QLocale::Germany));
        QVERIFY2(german.startsWith(u"16. Nov"_s) && !german.contains(u"Montag"_s),
                 qPrintable(german));
        const QString hungarian = mediumDateTime(clock.now(), QLocale(QLocale::Hungarian));
        QVERIFY2(!hungarian.contains(u",,"_s) && !hungarian.contains(u"hétfő"_s),
                 qPrintable(hungarian));
    }

    void freshInstall() {
        const AppSettings s(store, bundle, clock, ProductTexts::linuxDesktop());
        QCOMPARE(s.diagnosticsReport(u"not determined"_s), kFreshReport.arg(date()));
    }

    void configuredInstall() {
        FakeBundleInfo bare;
        bare.shortVersionValue.reset();
        bare.buildNumberValue.reset();
        bare.bundleIdentifierValue.reset();
        MemoryDefaultsStore configured;
        AppSettings s(configured, bare, clock, ProductTexts::linuxDesktop());
        s.setAppRules({AppRule{u"com.apple.Safari"_s, u"Safari"_s, AppRule::Action::quit, 2.9},
                       AppRule{u"org.x.Notes"_s, u"Notes 100%"_s, AppRule::Action::hide, 60}});
        s.setIdleQuitEnabled(true);
        s.setIdleQuitTimeout(1e300); // only a hand-edited file holds this; it must saturate
        s.setQuitWarningStyle(u"banner"_s);
        s.setQuitWarningSeconds(59.9);
        s.setExcludedBundleIDs({u"z.last"_s, u"a.first"_s});
        s.setProtectMenuBarApps(false);
        s.setShowBackgroundApps(true);
        s.setLaunchAtLogin(true);
        s.setShowInDock(true);
        s.setDockIconStyle(u"dark"_s);
        s.setShutdownSchedules(
            {{.isEnabled = false,
              .action = ShutdownSchedule::Action::wake,
              .days = {ShutdownSchedule::Weekday::saturday, ShutdownSchedule::Weekday::sunday},
              .hour = 7,
              .minute = 5},
             {.action = ShutdownSchedule::Action::sleep, .days = {}, .hour = 23}});
        s.setPmsetAlwaysAllow(true);
        s.setScheduleWarningStyle(u"window"_s);
        s.setScheduleWarningSeconds(120);
        s.setDisabledShortcutIDs({u"quitSelected"_s, u"restart"_s, u"bogus"_s, u"focusSearch"_s,
                                  u"selectAll"_s, u"sleep"_s, u"shutDown"_s, u"quitAllApps"_s});

        const QStringList expected{
            u"Vantle Diagnostics — "_s + date(),
            u"Version — (—) · —"_s,
            u"Linux Version 15.1 (Build 24B83) · arm64"_s,
            u"Notifications: denied"_s,
            u""_s,
            u"Per-App Rules (2)"_s,
            u"  Safari (com.apple.Safari) — quit after 2 min"_s,
            u"  Notes 100% (org.x.Notes) — hide after 60 min"_s,
            u""_s,
            u"System Idle (all apps): ON at 9000000000000000000 min"_s,
            u"Warning: banner, 59s grace"_s,
            u"Exclusions (2): z.last, a.first"_s,
            u"Protect menu bar apps: no"_s,
            u"Show background apps: yes"_s,
            u"Launch at login: yes"_s,
            u"Show in Dock: yes (dark)"_s,
            u""_s,
            u"Schedules (2)"_s,
            u"  Wake at 07:05 — Su Sa [disabled]"_s,
            u"  Sleep at 23:00 —  [enabled]"_s,
            u"vantle-power always allow: yes"_s,
            u"Schedule warning: window, 120s grace"_s,
            u""_s,
            u"Shortcuts off (7): Quit All Apps, Sleep, Restart, Shut Down, Search A Apps, "
            "Select All or None, Quit Selected Apps"_s,
        };
        QCOMPARE(s.diagnosticsReport(u"denied"_s), expected.join(u'\n'));
    }
};

QTEST_GUILESS_MAIN(TestDiagnostics)
#include "tst_diagnostics.moc"
