#include "support/PrivateSessionBus.h"

#include <QDBusConnectionInterface>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <memory>

using vantle::testing::PrivateSessionBus;
using namespace Qt::StringLiterals;

namespace {
const QString kServiceName = u"com.pelmark.vantle"_s;
}

// Starts real copies of vantle on a private session bus.
class TestSingleInstance : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PrivateSessionBus> m_bus;
    QTemporaryDir m_home;
    QTemporaryDir m_runtime;

    std::unique_ptr<QProcess> start(const QString& busAddress) const {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, busAddress);
        env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        env.insert(u"XDG_CONFIG_HOME"_s, m_home.path());
        env.insert(u"XDG_RUNTIME_DIR"_s, m_runtime.path());
        process->setProcessEnvironment(env);
        process->start(QStringLiteral(VANTLE_BINARY), {});
        return process;
    }

    QByteArray lockHolder() const {
        QFile lock(m_runtime.filePath(u"com.pelmark.vantle.lock"_s));
        return lock.open(QIODevice::ReadOnly) ? lock.readAll().trimmed() : QByteArray();
    }

    bool nameOwned() const {
        return m_bus->connection().interface()->isServiceRegistered(kServiceName);
    }
    // The process that holds the name; 0 when none does.
    uint owner() const { return m_bus->connection().interface()->servicePid(kServiceName).value(); }

    static void stop(QProcess& process, int signalNumber) {
        ::kill(static_cast<pid_t>(process.processId()), signalNumber);
        QVERIFY(process.waitForFinished(10'000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
    }

private slots:
    void init() {
        m_bus = std::make_unique<PrivateSessionBus>();
        if (!m_bus->isRunning()) {
            QSKIP(qPrintable(m_bus->error()));
        }
    }
    void cleanup() { m_bus.reset(); }

    void secondLaunchShowsTheFirstAndLeaves() {
        auto first = start(m_bus->address());
        QTRY_VERIFY_WITH_TIMEOUT(nameOwned(), 20'000);

        auto second = start(m_bus->address());
        QVERIFY(second->waitForFinished(20'000));
        QCOMPARE(second->exitStatus(), QProcess::NormalExit);
        QCOMPARE(second->exitCode(), 0);

        QString firstLog;
        QTRY_VERIFY_WITH_TIMEOUT((firstLog += QString::fromUtf8(first->readAllStandardError()))
                                     .contains(u"another launch asked to show Vantle"_s),
                                 10'000);
        QCOMPARE(first->state(), QProcess::Running);
        stop(*first, SIGTERM);
        QVERIFY(!nameOwned());
    }

    void copiesStartedTogetherLeaveExactlyOneRunning() {
        auto a = start(m_bus->address());
        auto b = start(m_bus->address());
        QTRY_VERIFY_WITH_TIMEOUT(
            a->state() == QProcess::NotRunning || b->state() == QProcess::NotRunning, 20'000);
        QProcess& ended = a->state() == QProcess::NotRunning ? *a : *b;
        QProcess& running = a->state() == QProcess::NotRunning ? *b : *a;
        QCOMPARE(ended.exitCode(), 0);
        // The survivor is the copy that holds the name, not one still on its way out.
        QTRY_COMPARE_WITH_TIMEOUT(owner(), uint(running.processId()), 20'000);
        QCOMPARE(running.state(), QProcess::Running);
        stop(running, SIGINT);
    }

    // Without a bus the runtime folder's lock keeps to one copy, and the first copy ending
    // (even killed) frees it for the next.
    void withoutASessionBusALockKeepsToOneCopy() {
        const QString noBus = u"unix:path=/nonexistent/vantle-test-bus"_s;
        for (const int endSignal : {SIGKILL, SIGTERM}) {
            auto first = start(noBus);
            // The holder writes its pid once it has the lock.
            QTRY_COMPARE_WITH_TIMEOUT(lockHolder(), QByteArray::number(first->processId()), 20'000);
            // The pipe may deliver the log line after the lock file shows the pid.
            QString firstLog;
            QTRY_VERIFY_WITH_TIMEOUT((firstLog += QString::fromUtf8(first->readAllStandardError()))
                                         .contains(u"no D-Bus session bus"_s),
                                     10'000);
            auto second = start(noBus);
            QVERIFY(second->waitForFinished(20'000));
            QCOMPARE(second->exitCode(), 0);
            QVERIFY(QString::fromUtf8(second->readAllStandardError())
                        .contains(u"already running (process %1)"_s.arg(first->processId())));
            QCOMPARE(first->state(), QProcess::Running);
            if (endSignal == SIGKILL) {
                first->kill();
                QVERIFY(first->waitForFinished(10'000));
            } else {
                stop(*first, endSignal);
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestSingleInstance)
#include "tst_singleinstance.moc"
