#include "fakes/ManualClock.h"
#include "platform/SystemClock.h"
#include "platform/ThreadPoolExecutor.h"
#include "platform/linux/GioApplicationCatalog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSemaphore>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace vantle;
using namespace std::chrono_literals;
using std::chrono::seconds;
using namespace Qt::StringLiterals;

namespace {

void write(const QString& path, const QByteArray& text) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

} // namespace

// The seams services run on: the real clock (where tolerant timers land, and that they keep
// running), the manual one every timed test relies on (firing in time order, honouring
// cancellation), the executor, whose background results must come back on the main thread and
// never to an owner that is gone, and desktop entries as GIO reads them: the user's own folder (the
// test's XDG_DATA_HOME) and files picked from anywhere.
class TestPlatformSeams : public QObject {
    Q_OBJECT

    QTemporaryDir m_elsewhere;
    QString m_applications;

private slots:
    // The idle sample, the auto-quit pass and the schedule tick start a few milliseconds apart at
    // launch; a grid of whole seconds no coarser than the tolerance lets their first runs fall
    // together, never later than asked.
    void alignedDelay_data() {
        QTest::addColumn<qint64>("now");
        QTest::addColumn<qint64>("interval");
        QTest::addColumn<qint64>("tolerance");
        QTest::addColumn<qint64>("delay");
        QTest::newRow("due on a grid point") << 100'000LL << 30'000LL << 5'000LL << 30'000LL;
        QTest::newRow("between grid points") << 102'500LL << 30'000LL << 5'000LL << 27'500LL;
        QTest::newRow("grid of whole seconds") << 100'000LL << 30'000LL << 4'999LL << 28'000LL;
        QTest::newRow("grid of 7 s") << 0LL << 60'000LL << 7'500LL << 56'000LL;
        QTest::newRow("under a second: as asked") << 102'500LL << 30'000LL << 900LL << 30'000LL;
        QTest::newRow("tolerance of the whole interval: as asked")
            << 102'500LL << 5'000LL << 5'000LL << 5'000LL;
    }
    void alignedDelay() {
        QFETCH(qint64, now);
        QFETCH(qint64, interval);
        QFETCH(qint64, tolerance);
        QFETCH(qint64, delay);
        QCOMPARE(SystemClock::alignedDelay(Milliseconds(now), Milliseconds(interval),
                                           Milliseconds(tolerance))
                     .count(),
                 delay);
    }

    void tolerantTimersKeepRunningAndCanBeCancelledFromTheirCallback() {
        SystemClock clock;
        int repeats = 0;
        Timer repeating = clock.repeating(
            20ms, [&repeats] { ++repeats; }, 10ms);
        int once = 0;
        Timer single;
        single = clock.singleShot(
            10ms,
            [&] {
                ++once;
                single.reset();
            },
            5ms);
        QTRY_VERIFY_WITH_TIMEOUT(repeats >= 3, 10'000);
        QCOMPARE(once, 1);
        QVERIFY(!single);
    }
    void firesDueTimersInTimeOrderWithTheirOwnNow() {
        ManualClock clock;
        const QDateTime start = clock.now();
        QStringList fired;
        QList<QDateTime> seenAt;
        Timer inner;
        Timer every30 = clock.repeating(seconds(30), [&] {
            fired << u"repeat"_s;
            seenAt << clock.now();
        });
        // A timer started by a callback counts from that moment: 45 + 40 s.
        Timer once = clock.singleShot(seconds(45), [&] {
            fired << u"once"_s;
            inner = clock.singleShot(seconds(40), [&] { fired << u"inner"_s; });
        });
        clock.advance(seconds(100));
        QCOMPARE(fired,
                 QStringList({u"repeat"_s, u"once"_s, u"repeat"_s, u"inner"_s, u"repeat"_s}));
        QCOMPARE(seenAt,
                 QList<QDateTime>({start.addSecs(30), start.addSecs(60), start.addSecs(90)}));
        QCOMPARE(clock.now(), start.addSecs(100));
        QCOMPARE(clock.monotonicNow(), std::chrono::milliseconds(100'000));
    }

    void destroyingAHandleCancelsEvenFromInsideACallback() {
        ManualClock clock;
        int count = 0;
        Timer timer;
        timer = clock.repeating(seconds(1), [&] {
            if (++count == 3) {
                timer.reset();
            }
        });
        Timer other = clock.singleShot(seconds(10), [&] { count += 100; });
        other.reset();
        clock.advance(seconds(20));
        QCOMPARE(count, 3);
        QCOMPARE(clock.pendingTimerCount(), std::size_t(0));
    }

    // A suspend gap fires what fell due once, at the time after the gap, and a repeating timer
    // carries on one interval from there; a timer a callback cancels does not run.
    void suspendGapFiresOverdueTimersOnce() {
        ManualClock clock;
        const QDateTime start = clock.now();
        QStringList fired;
        QList<QDateTime> seenAt;
        Timer later;
        Timer every30 = clock.repeating(seconds(30), [&] {
            fired << u"repeat"_s;
            seenAt << clock.now();
            later.reset();
        });
        later = clock.singleShot(seconds(50), [&] { fired << u"later"_s; });
        Timer beyond = clock.singleShot(seconds(700), [&] { fired << u"beyond"_s; });
        clock.jump(seconds(600));
        QCOMPARE(fired, QStringList({u"repeat"_s}));
        QCOMPARE(seenAt, QList<QDateTime>({start.addSecs(600)}));
        QCOMPARE(clock.monotonicNow(), std::chrono::milliseconds(600'000));
        clock.advance(seconds(100));
        QCOMPARE(fired,
                 QStringList({u"repeat"_s, u"repeat"_s, u"repeat"_s, u"repeat"_s, u"beyond"_s}));
        QCOMPARE(seenAt.at(1), start.addSecs(630));
    }

    void resultArrivesOnTheContextsThread() {
        ThreadPoolExecutor executor;
        QObject context;
        QThread* workedOn = nullptr;
        QThread* deliveredOn = nullptr;
        int result = 0;
        runInBackground(
            executor, &context,
            [&] {
                workedOn = QThread::currentThread();
                return 6 * 7;
            },
            [&](int value) {
                deliveredOn = QThread::currentThread();
                result = value;
            });
        QTRY_COMPARE(result, 42);
        QVERIFY(workedOn != QThread::currentThread());
        QCOMPARE(deliveredOn, QThread::currentThread());
    }

    void resultIsDroppedWhenTheContextIsGone() {
        ThreadPoolExecutor executor;
        auto context = std::make_unique<QObject>();
        QSemaphore started;
        QSemaphore release;
        bool delivered = false;
        runInBackground(
            executor, context.get(),
            [&] {
                started.release();
                release.acquire();
                return true;
            },
            [&](bool) { delivered = true; });
        started.acquire();
        context.reset();
        release.release();
        // One background thread runs jobs in order, so once a later job's result is in, the
        // earlier one's queued call has been delivered or dropped.
        QObject live;
        bool later = false;
        runInBackground(
            executor, &live, [] { return true; }, [&](bool) { later = true; });
        QTRY_VERIFY(later);
        QVERIFY(!delivered);
    }

    // The application catalog.
    void initTestCase() {
        m_applications = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                         u"/applications"_s;
        write(m_applications + u"/org.example.Notes.desktop"_s,
              "[Desktop Entry]\nType=Application\nName=Example Notes\nExec=true\nIcon=notes\n");
        write(m_applications + u"/org.example.Hidden.desktop"_s,
              "[Desktop Entry]\nType=Application\nName=Hidden Helper\nExec=true\nNoDisplay=true\n");
        write(m_elsewhere.filePath(u"tool.desktop"_s),
              "[Desktop Entry]\nType=Application\nName=Portable Tool\nExec=true\n");
        write(m_elsewhere.filePath(u"site.desktop"_s),
              "[Desktop Entry]\nType=Link\nName=A Site\nURL=https://example.org\n");
        write(m_elsewhere.filePath(u"notes.txt"_s), "not an entry\n");
    }

    void listsWhatALauncherShows() {
        QStringList listed;
        for (const auto& app : GioApplicationCatalog().installedApplications()) {
            listed << app.id + u'|' + app.name + u'|' + app.iconName;
        }
        QVERIFY(listed.contains(u"org.example.Notes|Example Notes|notes"_s));
        QVERIFY(!listed.join(u'\n').contains(u"org.example.Hidden"_s));
    }

    void readsEntriesFromAnywhere_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("name");
        QTest::newRow("installed") << m_applications + u"/org.example.Notes.desktop"_s
                                   << u"org.example.Notes"_s << u"Example Notes"_s;
        QTest::newRow("elsewhere")
            << m_elsewhere.filePath(u"tool.desktop"_s) << u"tool"_s << u"Portable Tool"_s;
        QTest::newRow("a link, not an application")
            << m_elsewhere.filePath(u"site.desktop"_s) << QString() << QString();
        QTest::newRow("not an entry")
            << m_elsewhere.filePath(u"notes.txt"_s) << QString() << QString();
        QTest::newRow("missing") << m_elsewhere.filePath(u"gone.desktop"_s) << QString()
                                 << QString();
    }
    void readsEntriesFromAnywhere() {
        QFETCH(QString, file);
        QFETCH(QString, id);
        QFETCH(QString, name);
        GioApplicationCatalog catalog;
        const auto app = catalog.applicationAt(file);
        QCOMPARE(app ? app->id : QString(), id);
        QCOMPARE(app ? app->name : QString(), name);
    }
};

QTEST_GUILESS_MAIN(TestPlatformSeams)
#include "tst_platformseams.moc"
