#include "fakes/LogCapture.h"
#include "platform/linux/FileDefaultsStore.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>

using namespace vantle;

namespace {

constexpr auto kDomain = "com.pelmark.vantle";
constexpr auto kWriterEnv = "VANTLE_TEST_SETTINGS_WRITER";

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

// Child process for the crash test: writes k0, k1, ... one save each, until killed.
int runWriter(const QString& dir) {
    FileDefaultsStore store(dir, QString::fromLatin1(kDomain));
    store.setObject(QStringLiteral("padding"), QByteArray(64 * 1024, 'x'));
    for (int i = 0;; ++i) {
        store.setObject(QStringLiteral("k%1").arg(i), i);
    }
}

} // namespace

class TestFileDefaultsStore : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString path() const { return m_dir.path() + QStringLiteral("/com.pelmark.vantle.json"); }
    FileDefaultsStore
    open(FileDefaultsStore::Mode mode = FileDefaultsStore::Mode::ReadWrite) const {
        return FileDefaultsStore(m_dir.path(), QString::fromLatin1(kDomain), mode);
    }

private slots:
    void init() {
        QDir(m_dir.path()).removeRecursively();
        QDir().mkpath(m_dir.path());
    }

    void valuesKeepTheirTypeAcrossRestarts() {
        const QByteArray binary("\x00\xff\xfe", 3);
        {
            FileDefaultsStore store = open();
            store.setObject(QStringLiteral("bool"), true);
            store.setObject(QStringLiteral("double"), 0.5);
            store.setObject(QStringLiteral("string"), QStringLiteral("notification"));
            store.setObject(QStringLiteral("numberText"), QStringLiteral("45"));
            store.setObject(QStringLiteral("list"), QStringList{QStringLiteral("a"), QString()});
            store.setObject(QStringLiteral("text"), QByteArray(R"([{"name":"Café"}])"));
            store.setObject(QStringLiteral("binary"), binary);
            store.setObject(QStringLiteral("gone"), 1);
            store.removeObject(QStringLiteral("gone"));
        }
        const FileDefaultsStore store = open();
        QCOMPARE(store.object(QStringLiteral("bool")), DefaultsValue(true));
        QCOMPARE(store.object(QStringLiteral("double")), DefaultsValue(0.5));
        QCOMPARE(store.object(QStringLiteral("string")), DefaultsValue("notification"));
        // A string that looks like a number stays a string.
        QCOMPARE(store.object(QStringLiteral("numberText")), DefaultsValue("45"));
        QCOMPARE(store.stringArrayValue(QStringLiteral("list")),
                 QStringList({QStringLiteral("a"), QString()}));
        QCOMPARE(store.dataValue(QStringLiteral("text")), QByteArray(R"([{"name":"Café"}])"));
        QCOMPARE(store.dataValue(QStringLiteral("binary")), binary);
        QVERIFY(!store.object(QStringLiteral("gone")));
        // Rule and schedule lists stay readable in the file.
        QVERIFY(readAll(path()).contains(R"([{\"name\":\"Café\"}])"));
    }

    void keysAndValuesItDoesNotKnowSurviveASave() {
        writeAll(path(), R"({"handEdited": {"nested": [1, 2]}, "mixed": [1, "a"], "n": null})");
        open().setObject(QStringLiteral("idleQuitEnabled"), true);
        const QJsonObject saved = QJsonDocument::fromJson(readAll(path())).object();
        QCOMPARE(
            saved.value(QStringLiteral("handEdited")).toObject().value(QStringLiteral("nested")),
            QJsonDocument::fromJson("[1,2]").array());
        QCOMPARE(saved.value(QStringLiteral("mixed")),
                 QJsonDocument::fromJson(R"([1,"a"])").array());
        QVERIFY(saved.value(QStringLiteral("n")).isNull());
        QCOMPARE(saved.value(QStringLiteral("idleQuitEnabled")), QJsonValue(true));
        // Such values read as present but of no known type.
        QVERIFY(!open().stringArrayValue(QStringLiteral("mixed")));
        QVERIFY(open().object(QStringLiteral("mixed")).has_value());
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
            FileDefaultsStore store = open();
            QVERIFY(!store.object(QStringLiteral("idleQuitEnabled")));
            store.setObject(QStringLiteral("quitWarningSeconds"), 30);
        }
        const FileDefaultsStore again = open();
        QCOMPARE(log.lines.size(), 1);
        QVERIFY(log.lines.first().contains(QStringLiteral("kept it as")));
        const QStringList aside = asideFiles(m_dir.path());
        QCOMPARE(aside.size(), 1);
        QCOMPARE(readAll(m_dir.filePath(aside.first())), contents);
        QCOMPARE(again.doubleValue(QStringLiteral("quitWarningSeconds")), 30.0);
    }

    void inspectionChangesNothingOnDisk() {
        writeAll(path(), "{broken");
        LogCapture log;
        FileDefaultsStore store = open(FileDefaultsStore::Mode::ReadOnly);
        store.setObject(QStringLiteral("idleQuitEnabled"), true);
        QCOMPARE(store.object(QStringLiteral("idleQuitEnabled")), DefaultsValue(true));
        QCOMPARE(readAll(path()), QByteArray("{broken"));
        QVERIFY(asideFiles(m_dir.path()).isEmpty());
        QCOMPARE(log.count(QStringLiteral("unreadable")), 1);
    }

    void twoRunningCopiesKeepEachOthersKeys() {
        FileDefaultsStore first = open();
        FileDefaultsStore second = open();
        first.setObject(QStringLiteral("launchAtLogin"), true);
        second.setObject(QStringLiteral("showInDock"), true);
        first.setObject(QStringLiteral("dockIconStyle"), QStringLiteral("dark"));
        const FileDefaultsStore fresh = open();
        QCOMPARE(fresh.object(QStringLiteral("launchAtLogin")), DefaultsValue(true));
        QCOMPARE(fresh.object(QStringLiteral("showInDock")), DefaultsValue(true));
        QCOMPARE(fresh.object(QStringLiteral("dockIconStyle")), DefaultsValue("dark"));
    }

    void otherDomainsAreReadNotWritten() {
        const QString legacy = m_dir.filePath(QStringLiteral("com.quorel.vantle.json"));
        writeAll(legacy, R"({"idleQuitTimeout": 45, "appRules": {"utf8": "[]"}})");
        writeAll(m_dir.filePath(QStringLiteral("com.yourname.EBB.json")), "{oops");
        LogCapture log;
        const FileDefaultsStore store = open();
        const auto domain = store.persistentDomain(QStringLiteral("com.quorel.vantle"));
        QVERIFY(domain);
        QCOMPARE(domain->value(QStringLiteral("idleQuitTimeout")), DefaultsValue(45.0));
        QCOMPARE(domain->value(QStringLiteral("appRules")), DefaultsValue(QByteArray("[]")));
        QVERIFY(!store.persistentDomain(QStringLiteral("com.yourname.EBB")));
        QVERIFY(!store.persistentDomain(QStringLiteral("missing")));
        QCOMPARE(log.count(QStringLiteral("com.yourname.EBB.json")), 1);
        // A broken legacy file is only reported, never moved.
        QVERIFY(asideFiles(m_dir.path()).isEmpty());
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
            const FileDefaultsStore store = open();
            QVERIFY2(log.lines.isEmpty(), qPrintable(log.lines.join(QLatin1Char('\n'))));
            QCOMPARE(store.dataValue(QStringLiteral("padding"))->size(), 64 * 1024);
            int last = -1;
            while (store.object(QStringLiteral("k%1").arg(last + 1))) {
                ++last;
            }
            // Every earlier key is still there: no save dropped another.
            for (int i = 0; i <= last; ++i) {
                QCOMPARE(store.doubleValue(QStringLiteral("k%1").arg(i)), double(i));
            }
        }
    }
};

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsSet(kWriterEnv)) {
        return runWriter(qEnvironmentVariable(kWriterEnv));
    }
    QCoreApplication app(argc, argv);
    TestFileDefaultsStore test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_filedefaultsstore.moc"
