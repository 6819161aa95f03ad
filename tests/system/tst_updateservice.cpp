#include "fakes/FakeUpdater.h"
#include "fakes/ManualClock.h"
#include "model/DiagnosticsReport.h"
#include "system/UpdateService.h"

#include <QSignalSpy>
#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;

class TestUpdateService : public QObject {
    Q_OBJECT

    ManualClock clock;

private slots:
    void initTestCase() {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        clock.setNow(QDateTime(QDate(2026, 11, 16), QTime(0, 30)));
    }

    // Where the package manager updates Vantle there is nothing to check, start or show.
    void withoutAnUpdater() {
        UpdateService service(nullptr, clock);
        QVERIFY(!service.hasUpdater());
        QVERIFY(!service.canCheckForUpdates());
        QVERIFY(!service.automaticallyChecksForUpdates());
        service.startUpdater();
        service.checkForUpdates();
        QCOMPARE(service.lastCheckText(), QString());
    }

    // The service mirrors the framework's own answer and only checks when it may.
    void mirrorsTheFramework() {
        FakeUpdater updater;
        UpdateService service(&updater, clock);
        QSignalSpy changed(&service, &UpdateService::canCheckForUpdatesChanged);
        QVERIFY(service.canCheckForUpdates());
        service.startUpdater();
        QCOMPARE(updater.starts, 1);
        updater.setCanCheck(false);
        QCOMPARE(changed.size(), 1);
        QVERIFY(!service.canCheckForUpdates());
        service.checkForUpdates();
        QCOMPARE(updater.checks, 0);
        updater.setCanCheck(true);
        service.checkForUpdates();
        QCOMPARE(updater.checks, 1);
    }

    void lastCheckText_data() {
        QTest::addColumn<QDateTime>("last");
        QTest::addColumn<QString>("text");
        const QLocale locale;
        const QTime morning(9, 41);
        const QString late = locale.toString(QTime(23, 59), QLocale::ShortFormat);
        QTest::newRow("never") << QDateTime() << QString();
        QTest::newRow("earlier today")
            << QDateTime(QDate(2026, 11, 16), QTime(0, 5))
            << u"Today at "_s + locale.toString(QTime(0, 5), QLocale::ShortFormat);
        QTest::newRow("just before midnight")
            << QDateTime(QDate(2026, 11, 15), QTime(23, 59)) << u"Yesterday at "_s + late;
        QTest::newRow("two days ago")
            << QDateTime(QDate(2026, 11, 14), morning)
            << mediumDateTime(QDateTime(QDate(2026, 11, 14), morning), locale);
    }
    void lastCheckText() {
        QFETCH(QDateTime, last);
        QFETCH(QString, text);
        FakeUpdater updater;
        if (last.isValid()) {
            updater.lastCheck = last;
        }
        QCOMPARE(UpdateService(&updater, clock).lastCheckText(), text);
    }
};

QTEST_GUILESS_MAIN(TestUpdateService)
#include "tst_updateservice.moc"
