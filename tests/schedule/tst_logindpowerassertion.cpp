#include "fakes/LogCapture.h"
#include "platform/linux/LogindPowerAssertion.h"
#include "support/DBusMock.h"
#include "support/PrivateSessionBus.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>
#include <QTest>
#include <memory>

using namespace vantle;
using vantle::testing::PrivateSessionBus;

namespace {
const QString kLogind = QStringLiteral("org.freedesktop.login1");
} // namespace

// Takes and drops logind's idle inhibitor on python-dbusmock's logind, served on a private bus
// that stands in for both the system and the session bus.
class TestLogindPowerAssertion : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<PrivateSessionBus> m_bus;
    std::unique_ptr<QProcess> m_logind;

    // (what, who, why, mode) of each inhibitor logind lists.
    QList<QStringList> inhibitors() const {
        const QDBusMessage reply = m_bus->connection().call(
            QDBusMessage::createMethodCall(kLogind, QStringLiteral("/org/freedesktop/login1"),
                                           QStringLiteral("org.freedesktop.login1.Manager"),
                                           QStringLiteral("ListInhibitors")),
            QDBus::Block, 5'000);
        QList<QStringList> result;
        if (reply.type() != QDBusMessage::ReplyMessage) {
            return result;
        }
        const auto list = reply.arguments().constFirst().value<QDBusArgument>();
        list.beginArray();
        while (!list.atEnd()) {
            QString what, who, why, mode;
            uint uid = 0, pid = 0;
            list.beginStructure();
            list >> what >> who >> why >> mode >> uid >> pid;
            list.endStructure();
            result.append({what, who, why, mode});
        }
        list.endArray();
        return result;
    }

private slots:
    void init() {
        m_bus = std::make_unique<PrivateSessionBus>();
        if (!m_bus->isRunning()) {
            QSKIP(qPrintable(m_bus->error()));
        }
        if (!vantle::testing::hasDBusMock()) {
            QSKIP("python3-dbusmock is not installed for /usr/bin/python3");
        }
    }
    void cleanup() {
        if (m_logind) {
            m_logind->terminate();
            m_logind->waitForFinished(5'000);
            m_logind.reset();
        }
        m_bus.reset();
    }

    void inhibitorIsListedOnlyWhileHeld() {
        m_logind = vantle::testing::startDBusMock(m_bus->address(), QStringLiteral("logind"));
        QTRY_VERIFY_WITH_TIMEOUT(m_bus->connection().interface()->isServiceRegistered(kLogind),
                                 20'000);

        LogCapture log;
        LogindPowerAssertion assertion(m_bus->connection(), m_bus->connection());
        QVERIFY(assertion.acquire(QStringLiteral("scheduled action due")));
        QVERIFY(assertion.acquire(QStringLiteral("again"))); // no second inhibitor
        QVERIFY(assertion.isHeld());
        QTRY_COMPARE_WITH_TIMEOUT(
            inhibitors(),
            QList<QStringList>({{QStringLiteral("idle"), QStringLiteral("Vantle"),
                                 QStringLiteral("scheduled action due"), QStringLiteral("block")}}),
            5'000);
        // This bus has no desktop inhibitor: said once, not an error.
        QCOMPARE(log.lines.size(), 1);
        QVERIFY(log.lines.constFirst().contains(QStringLiteral("no idle inhibitor")));

        assertion.release();
        QVERIFY(!assertion.isHeld());
        QTRY_VERIFY_WITH_TIMEOUT(inhibitors().isEmpty(), 5'000);

        // Held again after a release, and dropped when the object goes.
        {
            LogindPowerAssertion again(m_bus->connection(), m_bus->connection());
            QVERIFY(again.acquire(QStringLiteral("x")));
            QTRY_COMPARE_WITH_TIMEOUT(inhibitors().size(), 1, 5'000);
        }
        QTRY_VERIFY_WITH_TIMEOUT(inhibitors().isEmpty(), 5'000);
    }

    void withoutLogindFailsWithOneLogLine() {
        LogCapture log;
        LogindPowerAssertion assertion(m_bus->connection(), m_bus->connection());
        QVERIFY(!assertion.acquire(QStringLiteral("scheduled action due")));
        QVERIFY(!assertion.acquire(QStringLiteral("scheduled action due")));
        QVERIFY(!assertion.isHeld());
        assertion.release();
        QCOMPARE(log.count(QStringLiteral("could not keep the machine awake through logind")), 1);
    }
};

QTEST_GUILESS_MAIN(TestLogindPowerAssertion)
#include "tst_logindpowerassertion.moc"
