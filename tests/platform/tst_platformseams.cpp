#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "platform/SystemClock.h"
#include "platform/ThreadPoolExecutor.h"
#include "platform/linux/FileDefaultsStore.h"
#include "platform/linux/FileLock.h"
#include "platform/linux/GioApplicationCatalog.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSemaphore>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

using namespace vantle;
using namespace std::chrono_literals;
using std::chrono::seconds;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kDomain = "com.pelmark.vantle";
constexpr auto kWriterEnv = "VANTLE_TEST_SETTINGS_WRITER";
// Well past the 5 s a save used to wait for a busy lock, well above a slow sanitizer build.
constexpr qint64 kInterfaceBudgetMs = 500;

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeAll(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

QStringList asideFiles(const QString& dir) {
    return QDir(dir).entryList({u"*.corrupt-*"_s}, QDir::Files);
}

QStringList tempLeftovers(const QString& dir) {
    QStringList names =
        QDir(dir).entryList({u"com.pelmark.vantle.json.*"_s}, QDir::Files | QDir::Hidden);
    names.removeIf([](const QString& name) { return name.contains(u"corrupt"_s); });
    return names;
}

// Child process for the crash test: writes k0, k1, ... one save each, until killed.
int runWriter(const QString& dir) {
    ManualClock clock;
    FileDefaultsStore store(dir, QString::fromLatin1(kDomain), clock);
    store.setObject(u"padding"_s, QByteArray(64 * 1024, 'x'));
    for (int i = 0;; ++i) {
        store.setObject(u"k%1"_s.arg(i), i);
    }
}

// Makes a folder one the test cannot write to, even when the tests run as root.
class ReadOnlyFolder {
public:
    explicit ReadOnlyFolder(const QString& path)
        : m_path(QFile::encodeName(path)) {
        ::chmod(m_path.constData(), 0555);
        if (::geteuid() == 0) {
            m_wasRoot = ::seteuid(65534) == 0; // nobody
        }
    }
    ~ReadOnlyFolder() { restore(); }
    void restore() {
        if (m_wasRoot) {
            m_wasRoot = ::seteuid(0) != 0;
        }
        ::chmod(m_path.constData(), 0755);
    }

private:
    QByteArray m_path;
    bool m_wasRoot = false;
};

} // namespace

// The seams services run on: the settings file (saved whole, never torn, never lost to a rival
// copy), the real clock (where tolerant timers land, and that they keep running), the manual one
// every timed test relies on (firing in time order, honouring cancellation), the executor, whose
// background results must come back on the main thread and never to an owner that is gone, and
// desktop entries as GIO reads them: the user's own folder (the test's XDG_DATA_HOME) and files
// picked from anywhere.
class TestPlatformSeams : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    ManualClock m_clock;
    QTemporaryDir m_elsewhere;
    QString m_applications;
    QString path() const { return m_dir.path() + u"/com.pelmark.vantle.json"_s; }
    QString lockPath() const { return m_dir.path() + u"/.com.pelmark.vantle.lock"_s; }
    std::unique_ptr<FileDefaultsStore>
    open(FileDefaultsStore::Mode mode = FileDefaultsStore::Mode::ReadWrite) {
        return std::make_unique<FileDefaultsStore>(m_dir.path(), QString::fromLatin1(kDomain),
                                                   m_clock, mode);
    }
    QJsonObject onDisk() const { return QJsonDocument::fromJson(readAll(path())).object(); }

    // Sets each key in turn, as the interface thread would, and fails if any set blocks.
    static void setAll(FileDefaultsStore& store, const QList<std::pair<QString, int>>& values) {
        for (const auto& [key, value] : values) {
            QElapsedTimer timer;
            timer.start();
            store.setObject(key, value);
            QVERIFY2(timer.elapsed() < kInterfaceBudgetMs, qPrintable(key));
        }
    }

private slots:
    void init() {
        QDir(m_dir.path()).removeRecursively();
        QDir().mkpath(m_dir.path());
    }

    void valuesKeepTheirTypeAcrossRestarts() {
        const QList<std::pair<QString, DefaultsValue>> values{
            {u"bool"_s, true},
            {u"double"_s, 0.5},
            {u"string"_s, "notification"},
            {u"numberText"_s, "45"}, // a string that looks like a number stays a string
            {u"list"_s, QStringList{u"a"_s, QString()}},
            {u"text"_s, QByteArray(R"([{"name":"Café"}])")},
            {u"binary"_s, QByteArray("\x00\xff\xfe", 3)}};
        {
            const auto store = open();
            for (const auto& [key, value] : values) {
                store->setObject(key, value);
            }
            store->setObject(u"gone"_s, 1);
            store->removeObject(u"gone"_s);
        }
        const auto store = open();
        for (const auto& [key, value] : values) {
            QCOMPARE(store->object(key), value);
        }
        QVERIFY(!store->object(u"gone"_s));
        // Rule and schedule lists stay readable in the file.
        QVERIFY(readAll(path()).contains(R"([{\"name\":\"Café\"}])"));
    }

    void keysAndValuesItDoesNotKnowSurviveASave() {
        const QByteArray handEdited =
            R"({"handEdited": {"nested": [1, 2]}, "mixed": [1, "a"], "n": null})";
        writeAll(path(), handEdited);
        open()->setObject(u"idleQuitEnabled"_s, true);
        QJsonObject expected = QJsonDocument::fromJson(handEdited).object();
        expected.insert(u"idleQuitEnabled"_s, true);
        QCOMPARE(onDisk(), expected);
        // Such values read as present but of no known type.
        QVERIFY(!open()->stringArrayValue(u"mixed"_s));
        QVERIFY(open()->object(u"mixed"_s).has_value());
    }

    void corruptFileIsKeptAsideAndReportedOnce_data() {
        QTest::addColumn<QByteArray>("contents");
        QTest::newRow("truncated") << QByteArray(R"({"idleQuitEnabled": tr)");
        QTest::newRow("not an object") << QByteArray(R"([true])");
        QTest::newRow("binary junk") << QByteArray("\x00\x01\x02", 3);
    }
    void corruptFileIsKeptAsideAndReportedOnce() {
        QFETCH(QByteArray, contents);
        writeAll(path(), contents);
        LogCapture log;
        {
            const auto store = open();
            QVERIFY(!store->object(u"idleQuitEnabled"_s));
            store->setObject(u"quitWarningSeconds"_s, 30);
        }
        const auto again = open();
        QCOMPARE(log.lines.size(), 1);
        QVERIFY(log.lines.first().contains(u"kept it as"_s));
        const QStringList aside = asideFiles(m_dir.path());
        QCOMPARE(aside.size(), 1);
        QCOMPARE(readAll(m_dir.filePath(aside.first())), contents);
        QCOMPARE(again->doubleValue(u"quitWarningSeconds"_s), 30.0);
    }

    void inspectionChangesNothingOnDisk() {
        writeAll(path(), "{broken");
        LogCapture log;
        const auto store = open(FileDefaultsStore::Mode::ReadOnly);
        store->setObject(u"idleQuitEnabled"_s, true);
        QCOMPARE(store->object(u"idleQuitEnabled"_s), DefaultsValue(true));
        QCOMPARE(readAll(path()), QByteArray("{broken"));
        QVERIFY(asideFiles(m_dir.path()).isEmpty());
        QCOMPARE(log.count(u"unreadable"_s), 1);
    }

    void twoRunningCopiesKeepEachOthersKeys() {
        const auto first = open();
        const auto second = open();
        first->setObject(u"launchAtLogin"_s, true);
        second->setObject(u"showInDock"_s, true);
        first->setObject(u"dockIconStyle"_s, u"dark"_s);
        QCOMPARE(onDisk(), QJsonObject({{u"launchAtLogin"_s, true},
                                        {u"showInDock"_s, true},
                                        {u"dockIconStyle"_s, u"dark"_s}}));
    }

    void otherDomainsAreReadNotWritten() {
        const QString legacy = m_dir.filePath(u"com.quorel.vantle.json"_s);
        writeAll(legacy, R"({"idleQuitTimeout": 45, "appRules": {"utf8": "[]"}})");
        writeAll(m_dir.filePath(u"com.yourname.EBB.json"_s), "{oops");
        LogCapture log;
        const auto store = open();
        QCOMPARE(store->persistentDomain(u"com.quorel.vantle"_s),
                 std::optional(DefaultsDomain{{u"idleQuitTimeout"_s, 45.0},
                                              {u"appRules"_s, QByteArray("[]")}}));
        QVERIFY(!store->persistentDomain(u"com.yourname.EBB"_s));
        QVERIFY(!store->persistentDomain(u"missing"_s));
        QCOMPARE(log.count(u"com.yourname.EBB.json"_s), 1);
        // A broken legacy file is only reported, never moved.
        QVERIFY(asideFiles(m_dir.path()).isEmpty());
    }

    // What a killed or crashed copy leaves in the lock file must not hold up a save.
    void staleLockDoesNotDelayASave_data() {
        QTest::addColumn<QByteArray>("lockContents");
        QProcess gone;
        gone.start(u"true"_s, {});
        QVERIFY(gone.waitForFinished());
        const QByteArray deadPid = QByteArray::number(gone.processId());
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("dead owner") << deadPid + "\n";
        QTest::newRow("dead owner, older format") << deadPid + "\nsomehost\nvantle\n";
    }
    void staleLockDoesNotDelayASave() {
        QFETCH(QByteArray, lockContents);
        writeAll(lockPath(), lockContents);
        LogCapture log;
        const auto store = open();
        setAll(*store, {{u"quitWarningSeconds"_s, 30}});
        QVERIFY(!store->hasPendingChanges());
        QCOMPARE(onDisk().value(u"quitWarningSeconds"_s), QJsonValue(30));
        QVERIFY2(log.lines.isEmpty(), qPrintable(log.lines.join(QLatin1Char('\n'))));
    }

    void liveRivalDelaysButNeverLosesASave() {
        // flock is per open file, so a lock of this process's own stands in for a second copy.
        FileLock rival(lockPath());
        QCOMPARE(rival.tryLock(), FileLock::Result::Acquired);
        LogCapture log;
        const auto store = open();
        setAll(*store, {{u"a"_s, 1}, {u"b"_s, 1}, {u"a"_s, 2}});
        store->removeObject(u"b"_s);
        m_clock.advance(10s);
        // Later changes join the queue; the values read back at once meanwhile.
        setAll(*store, {{u"c"_s, 3}});
        QVERIFY(store->hasPendingChanges());
        QVERIFY(!QFile::exists(path()));
        QCOMPARE(store->doubleValue(u"a"_s), 2.0);
        QCOMPARE(log.count(u"held by process %1"_s.arg(::getpid())), 1);

        rival.unlock();
        m_clock.advance(1s);
        QVERIFY(!store->hasPendingChanges());
        QCOMPARE(onDisk(), QJsonObject({{u"a"_s, 2}, {u"c"_s, 3}}));
        QCOMPARE(log.count(u"once the lock was free"_s), 1);
        QCOMPARE(log.lines.size(), 2);

        // On the way out no timer runs any more: the flush itself must write.
        QCOMPARE(rival.tryLock(), FileLock::Result::Acquired);
        setAll(*store, {{u"d"_s, 4}});
        rival.unlock();
        store->flush();
        QCOMPARE(onDisk().value(u"d"_s), QJsonValue(4));
    }

    void readOnlyFolderIsReportedAsSuch() {
        writeAll(path(), R"({"kept": true})");
        const auto store = open();
        LogCapture log;
        ReadOnlyFolder folder(m_dir.path());
        setAll(*store, {{u"a"_s, 1}, {u"b"_s, 2}});
        QCOMPARE(log.lines.size(), 1);
        QVERIFY2(log.lines.first().contains(u"is not writable"_s), qPrintable(log.lines.first()));
        QVERIFY(!log.lines.first().contains(u"lock"_s));
        QCOMPARE(store->doubleValue(u"b"_s), 2.0);

        // Fixed while the app runs: the queued changes land with the next attempt.
        folder.restore();
        m_clock.advance(30s);
        QCOMPARE(onDisk(), QJsonObject({{u"kept"_s, true}, {u"a"_s, 1}, {u"b"_s, 2}}));
    }

    void leftoverTempFilesAreRemovedAtStart_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("rivalRunning");
        QTest::addColumn<bool>("removed");
        QTest::newRow("killed save") << "com.pelmark.vantle.json.aB3xYz" << false << true;
        QTest::newRow("a live copy may be saving")
            << "com.pelmark.vantle.json.aB3xYz" << true << false;
        QTest::newRow("kept-aside file")
            << "com.pelmark.vantle.json.corrupt-20261116-090000" << false << false;
        QTest::newRow("another domain") << "com.quorel.vantle.json.aB3xYz" << false << false;
        QTest::newRow("not a temp name") << "com.pelmark.vantle.json.aB3xY" << false << false;
    }
    void leftoverTempFilesAreRemovedAtStart() {
        QFETCH(QString, name);
        QFETCH(bool, rivalRunning);
        QFETCH(bool, removed);
        writeAll(m_dir.filePath(name), "{}");
        FileLock rival(lockPath());
        if (rivalRunning) {
            QCOMPARE(rival.tryLock(), FileLock::Result::Acquired);
        }
        open();
        QCOMPARE(QFile::exists(m_dir.filePath(name)), !removed);
    }

    // A crash mid-save leaves either the old file or the new one, never a torn one.
    void killedWriterNeverLeavesATornFile() {
        for (int round = 0; round < 12; ++round) {
            init();
            QProcess writer;
            QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
            env.insert(QString::fromLatin1(kWriterEnv), m_dir.path());
            writer.setProcessEnvironment(env);
            writer.start(QCoreApplication::applicationFilePath(), {});
            QVERIFY(writer.waitForStarted());
            // Let it get some saves in, then kill it at a different point each round.
            QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(path()), 10'000);
            QTest::qWait(5 + 7 * round);
            ::kill(static_cast<pid_t>(writer.processId()), SIGKILL);
            QVERIFY(writer.waitForFinished());

            LogCapture log;
            const auto store = open();
            QVERIFY2(log.lines.isEmpty(), qPrintable(log.lines.join(QLatin1Char('\n'))));
            QCOMPARE(store->dataValue(u"padding"_s)->size(), 64 * 1024);
            // Every earlier key is still there: no save dropped another.
            for (int i = 0; store->object(u"k%1"_s.arg(i)); ++i) {
                QCOMPARE(store->doubleValue(u"k%1"_s.arg(i)), double(i));
            }
            QCOMPARE(tempLeftovers(m_dir.path()), QStringList());
        }
    }

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

    // Due timers fire in time order, each seeing its own now, and one a callback starts counts
    // from that moment. A suspend gap fires what fell due once, at the time after the gap, and a
    // repeating timer carries on one interval from there. A cancelled timer never runs, even when
    // a callback cancels it, its own included.
    void firesDueTimersInTimeOrderAndOnceAfterASuspendGap() {
        ManualClock clock;
        const QDateTime start = clock.now();
        QStringList fired;
        QList<QDateTime> seenAt;
        Timer inner;
        Timer later;
        Timer every30;
        every30 = clock.repeating(seconds(30), [&] {
            fired << u"repeat"_s;
            seenAt << clock.now();
            later.reset();
            if (seenAt.size() == 5) {
                every30.reset();
            }
        });
        // `inner` is due at 45 + 40 s.
        Timer once = clock.singleShot(seconds(45), [&] {
            fired << u"once"_s;
            inner = clock.singleShot(seconds(40), [&] { fired << u"inner"_s; });
        });
        Timer never = clock.singleShot(seconds(10), [&] { fired << u"never"_s; });
        never.reset();
        clock.advance(seconds(100));
        QCOMPARE(fired,
                 QStringList({u"repeat"_s, u"once"_s, u"repeat"_s, u"inner"_s, u"repeat"_s}));
        QCOMPARE(seenAt,
                 QList<QDateTime>({start.addSecs(30), start.addSecs(60), start.addSecs(90)}));
        QCOMPARE(clock.now(), start.addSecs(100));

        fired.clear();
        later = clock.singleShot(seconds(50), [&] { fired << u"later"_s; });
        Timer beyond = clock.singleShot(seconds(700), [&] { fired << u"beyond"_s; });
        clock.jump(seconds(600));
        QCOMPARE(fired, QStringList({u"repeat"_s}));
        QCOMPARE(seenAt.last(), start.addSecs(700));
        QCOMPARE(clock.monotonicNow(), std::chrono::milliseconds(700'000));
        clock.advance(seconds(100));
        QCOMPARE(fired, QStringList({u"repeat"_s, u"repeat"_s, u"beyond"_s}));
        QCOMPARE(seenAt.last(), start.addSecs(730));
        QCOMPARE(clock.pendingTimerCount(), std::size_t(0));
    }

    void resultIsDroppedWhenTheContextIsGoneAndOtherwiseArrivesOnItsThread() {
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
        // earlier one's queued call has been delivered or dropped. That result comes back on the
        // context's thread.
        QObject live;
        QThread* workedOn = nullptr;
        QThread* deliveredOn = nullptr;
        runInBackground(
            executor, &live, [] { return QThread::currentThread(); },
            [&](QThread* worker) {
                workedOn = worker;
                deliveredOn = QThread::currentThread();
            });
        QTRY_VERIFY(deliveredOn);
        QVERIFY(!delivered);
        QVERIFY(workedOn && workedOn != QThread::currentThread());
        QCOMPARE(deliveredOn, QThread::currentThread());
    }

    // The application catalog.
    void initTestCase() {
        m_applications = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                         u"/applications"_s;
        writeAll(m_applications + u"/org.example.Notes.desktop"_s,
                 "[Desktop Entry]\nType=Application\nName=Example Notes\nExec=true\nIcon=notes\n");
        writeAll(
            m_applications + u"/org.example.Hidden.desktop"_s,
            "[Desktop Entry]\nType=Application\nName=Hidden Helper\nExec=true\nNoDisplay=true\n");
        writeAll(m_elsewhere.filePath(u"tool.desktop"_s),
                 "[Desktop Entry]\nType=Application\nName=Portable Tool\nExec=true\n");
        writeAll(m_elsewhere.filePath(u"site.desktop"_s),
                 "[Desktop Entry]\nType=Link\nName=A Site\nURL=https://example.org\n");
        writeAll(m_elsewhere.filePath(u"notes.txt"_s), "not an entry\n");
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
        const auto app = GioApplicationCatalog().applicationAt(file);
        QCOMPARE(app ? app->id : QString(), id);
        QCOMPARE(app ? app->name : QString(), name);
    }
};

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsSet(kWriterEnv)) {
        return runWriter(qEnvironmentVariable(kWriterEnv));
    }
    QCoreApplication app(argc, argv);
    TestPlatformSeams test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_platformseams.moc"
