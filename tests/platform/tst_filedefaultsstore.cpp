#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "platform/linux/FileDefaultsStore.h"
#include "platform/linux/FileLock.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

using namespace vantle;
using namespace std::chrono_literals;

namespace {

constexpr auto kDomain = "com.pelmark.vantle";
constexpr auto kWriterEnv = "VANTLE_TEST_SETTINGS_WRITER";
constexpr auto kLockHolderEnv = "VANTLE_TEST_SETTINGS_LOCK_HOLDER";
// Well past the 5 s a save used to wait for a busy lock, well above a slow sanitizer build.
constexpr qint64 kInterfaceBudgetMs = 500;

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeAll(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

QStringList asideFiles(const QString& dir) {
    return QDir(dir).entryList({QStringLiteral("*.corrupt-*")}, QDir::Files);
}

QStringList tempLeftovers(const QString& dir) {
    QStringList names = QDir(dir).entryList({QStringLiteral("com.pelmark.vantle.json.*")},
                                            QDir::Files | QDir::Hidden);
    names.removeIf([](const QString& name) { return name.contains(QStringLiteral("corrupt")); });
    return names;
}

// Child process for the crash test: writes k0, k1, ... one save each, until killed.
int runWriter(const QString& dir) {
    ManualClock clock;
    FileDefaultsStore store(dir, QString::fromLatin1(kDomain), clock);
    store.setObject(QStringLiteral("padding"), QByteArray(64 * 1024, 'x'));
    for (int i = 0;; ++i) {
        store.setObject(QStringLiteral("k%1").arg(i), i);
    }
}

// Child process standing in for a second running copy: holds the settings lock until its input
// closes.
int runLockHolder(const QString& lockPath) {
    FileLock lock(lockPath);
    if (lock.tryLock() != FileLock::Result::Acquired) {
        return 1;
    }
    std::fputs("locked\n", stdout);
    std::fflush(stdout);
    char buffer[64];
    while (::read(STDIN_FILENO, buffer, sizeof buffer) > 0) {
    }
    return 0;
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

class TestFileDefaultsStore : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    ManualClock m_clock;
    QString path() const { return m_dir.path() + QStringLiteral("/com.pelmark.vantle.json"); }
    QString lockPath() const { return m_dir.path() + QStringLiteral("/.com.pelmark.vantle.lock"); }
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
        const QByteArray binary("\x00\xff\xfe", 3);
        {
            const auto store = open();
            store->setObject(QStringLiteral("bool"), true);
            store->setObject(QStringLiteral("double"), 0.5);
            store->setObject(QStringLiteral("string"), QStringLiteral("notification"));
            store->setObject(QStringLiteral("numberText"), QStringLiteral("45"));
            store->setObject(QStringLiteral("list"), QStringList{QStringLiteral("a"), QString()});
            store->setObject(QStringLiteral("text"), QByteArray(R"([{"name":"Café"}])"));
            store->setObject(QStringLiteral("binary"), binary);
            store->setObject(QStringLiteral("gone"), 1);
            store->removeObject(QStringLiteral("gone"));
        }
        const auto store = open();
        QCOMPARE(store->object(QStringLiteral("bool")), DefaultsValue(true));
        QCOMPARE(store->object(QStringLiteral("double")), DefaultsValue(0.5));
        QCOMPARE(store->object(QStringLiteral("string")), DefaultsValue("notification"));
        // A string that looks like a number stays a string.
        QCOMPARE(store->object(QStringLiteral("numberText")), DefaultsValue("45"));
        QCOMPARE(store->stringArrayValue(QStringLiteral("list")),
                 QStringList({QStringLiteral("a"), QString()}));
        QCOMPARE(store->dataValue(QStringLiteral("text")), QByteArray(R"([{"name":"Café"}])"));
        QCOMPARE(store->dataValue(QStringLiteral("binary")), binary);
        QVERIFY(!store->object(QStringLiteral("gone")));
        // Rule and schedule lists stay readable in the file.
        QVERIFY(readAll(path()).contains(R"([{\"name\":\"Café\"}])"));
    }

    void keysAndValuesItDoesNotKnowSurviveASave() {
        writeAll(path(), R"({"handEdited": {"nested": [1, 2]}, "mixed": [1, "a"], "n": null})");
        open()->setObject(QStringLiteral("idleQuitEnabled"), true);
        const QJsonObject saved = QJsonDocument::fromJson(readAll(path())).object();
        QCOMPARE(
            saved.value(QStringLiteral("handEdited")).toObject().value(QStringLiteral("nested")),
            QJsonDocument::fromJson("[1,2]").array());
        QCOMPARE(saved.value(QStringLiteral("mixed")),
                 QJsonDocument::fromJson(R"([1,"a"])").array());
        QVERIFY(saved.value(QStringLiteral("n")).isNull());
        QCOMPARE(saved.value(QStringLiteral("idleQuitEnabled")), QJsonValue(true));
        // Such values read as present but of no known type.
        QVERIFY(!open()->stringArrayValue(QStringLiteral("mixed")));
        QVERIFY(open()->object(QStringLiteral("mixed")).has_value());
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
            QVERIFY(!store->object(QStringLiteral("idleQuitEnabled")));
            store->setObject(QStringLiteral("quitWarningSeconds"), 30);
        }
        const auto again = open();
        QCOMPARE(log.lines.size(), 1);
        QVERIFY(log.lines.first().contains(QStringLiteral("kept it as")));
        const QStringList aside = asideFiles(m_dir.path());
        QCOMPARE(aside.size(), 1);
        QCOMPARE(readAll(m_dir.filePath(aside.first())), contents);
        QCOMPARE(again->doubleValue(QStringLiteral("quitWarningSeconds")), 30.0);
    }

    void inspectionChangesNothingOnDisk() {
        writeAll(path(), "{broken");
        LogCapture log;
        const auto store = open(FileDefaultsStore::Mode::ReadOnly);
        store->setObject(QStringLiteral("idleQuitEnabled"), true);
        QCOMPARE(store->object(QStringLiteral("idleQuitEnabled")), DefaultsValue(true));
        QCOMPARE(readAll(path()), QByteArray("{broken"));
        QVERIFY(asideFiles(m_dir.path()).isEmpty());
        QCOMPARE(log.count(QStringLiteral("unreadable")), 1);
    }

    void twoRunningCopiesKeepEachOthersKeys() {
        const auto first = open();
        const auto second = open();
        first->setObject(QStringLiteral("launchAtLogin"), true);
        second->setObject(QStringLiteral("showInDock"), true);
        first->setObject(QStringLiteral("dockIconStyle"), QStringLiteral("dark"));
        const auto fresh = open();
        QCOMPARE(fresh->object(QStringLiteral("launchAtLogin")), DefaultsValue(true));
        QCOMPARE(fresh->object(QStringLiteral("showInDock")), DefaultsValue(true));
        QCOMPARE(fresh->object(QStringLiteral("dockIconStyle")), DefaultsValue("dark"));
    }

    void otherDomainsAreReadNotWritten() {
        const QString legacy = m_dir.filePath(QStringLiteral("com.quorel.vantle.json"));
        writeAll(legacy, R"({"idleQuitTimeout": 45, "appRules": {"utf8": "[]"}})");
        writeAll(m_dir.filePath(QStringLiteral("com.yourname.EBB.json")), "{oops");
        LogCapture log;
        const auto store = open();
        const auto domain = store->persistentDomain(QStringLiteral("com.quorel.vantle"));
        QVERIFY(domain);
        QCOMPARE(domain->value(QStringLiteral("idleQuitTimeout")), DefaultsValue(45.0));
        QCOMPARE(domain->value(QStringLiteral("appRules")), DefaultsValue(QByteArray("[]")));
        QVERIFY(!store->persistentDomain(QStringLiteral("com.yourname.EBB")));
        QVERIFY(!store->persistentDomain(QStringLiteral("missing")));
        QCOMPARE(log.count(QStringLiteral("com.yourname.EBB.json")), 1);
        // A broken legacy file is only reported, never moved.
        QVERIFY(asideFiles(m_dir.path()).isEmpty());
    }

    // What a killed or crashed copy leaves in the lock file must not hold up a save.
    void staleLockDoesNotDelayASave_data() {
        QTest::addColumn<QByteArray>("lockContents");
        QProcess gone;
        gone.start(QStringLiteral("true"), {});
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
        setAll(*store, {{QStringLiteral("quitWarningSeconds"), 30}});
        QVERIFY(!store->hasPendingChanges());
        QCOMPARE(onDisk().value(QStringLiteral("quitWarningSeconds")), QJsonValue(30));
        QVERIFY2(log.lines.isEmpty(), qPrintable(log.lines.join(QLatin1Char('\n'))));
    }

    void liveRivalDelaysButNeverLosesASave() {
        QProcess rival;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QString::fromLatin1(kLockHolderEnv), lockPath());
        rival.setProcessEnvironment(env);
        rival.start(QCoreApplication::applicationFilePath(), {});
        QVERIFY(rival.waitForReadyRead(10'000));
        QCOMPARE(rival.readLine(), QByteArray("locked\n"));

        LogCapture log;
        const auto store = open();
        setAll(*store,
               {{QStringLiteral("a"), 1}, {QStringLiteral("b"), 1}, {QStringLiteral("a"), 2}});
        store->removeObject(QStringLiteral("b"));
        m_clock.advance(10s);
        // Later changes join the queue; the values read back at once meanwhile.
        setAll(*store, {{QStringLiteral("c"), 3}});
        QVERIFY(store->hasPendingChanges());
        QVERIFY(!QFile::exists(path()));
        QCOMPARE(store->doubleValue(QStringLiteral("a")), 2.0);
        QCOMPARE(log.count(QStringLiteral("held by process %1").arg(rival.processId())), 1);

        rival.closeWriteChannel();
        QVERIFY(rival.waitForFinished(10'000));
        QCOMPARE(rival.exitCode(), 0);
        m_clock.advance(1s);
        QVERIFY(!store->hasPendingChanges());
        QCOMPARE(onDisk(), QJsonObject({{QStringLiteral("a"), 2}, {QStringLiteral("c"), 3}}));
        QCOMPARE(log.count(QStringLiteral("once the lock was free")), 1);
        QCOMPARE(log.lines.size(), 2);
    }

    void pendingChangesAreFlushedOnTheWayOut() {
        FileLock rival(lockPath());
        QCOMPARE(rival.tryLock(), FileLock::Result::Acquired);
        const auto store = open();
        setAll(*store, {{QStringLiteral("launchAtLogin"), 1}});
        QVERIFY(store->hasPendingChanges());
        rival.unlock();
        // No timer runs any more: the flush itself must write.
        store->flush();
        QCOMPARE(onDisk().value(QStringLiteral("launchAtLogin")), QJsonValue(1));
    }

    void readOnlyFolderIsReportedAsSuch() {
        writeAll(path(), R"({"kept": true})");
        const auto store = open();
        LogCapture log;
        ReadOnlyFolder folder(m_dir.path());
        setAll(*store, {{QStringLiteral("a"), 1}, {QStringLiteral("b"), 2}});
        QCOMPARE(log.lines.size(), 1);
        QVERIFY2(log.lines.first().contains(QStringLiteral("is not writable")),
                 qPrintable(log.lines.first()));
        QVERIFY(!log.lines.first().contains(QStringLiteral("lock")));
        QCOMPARE(store->doubleValue(QStringLiteral("b")), 2.0);

        // Fixed while the app runs: the queued changes land with the next attempt.
        folder.restore();
        m_clock.advance(30s);
        QCOMPARE(onDisk(), QJsonObject({{QStringLiteral("kept"), true},
                                        {QStringLiteral("a"), 1},
                                        {QStringLiteral("b"), 2}}));
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
            QDir(m_dir.path()).removeRecursively();
            QDir().mkpath(m_dir.path());
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
            QCOMPARE(store->dataValue(QStringLiteral("padding"))->size(), 64 * 1024);
            int last = -1;
            while (store->object(QStringLiteral("k%1").arg(last + 1))) {
                ++last;
            }
            // Every earlier key is still there: no save dropped another.
            for (int i = 0; i <= last; ++i) {
                QCOMPARE(store->doubleValue(QStringLiteral("k%1").arg(i)), double(i));
            }
            QVERIFY2(tempLeftovers(m_dir.path()).isEmpty(),
                     qPrintable(tempLeftovers(m_dir.path()).join(QLatin1Char(' '))));
        }
    }
};

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsSet(kWriterEnv)) {
        return runWriter(qEnvironmentVariable(kWriterEnv));
    }
    if (qEnvironmentVariableIsSet(kLockHolderEnv)) {
        return runLockHolder(qEnvironmentVariable(kLockHolderEnv));
    }
    QCoreApplication app(argc, argv);
    TestFileDefaultsStore test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_filedefaultsstore.moc"
