#include "fakes/LogCapture.h"
#include "platform/linux/LogindPowerAssertion.h"
#include "support/DBusMock.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>
#include <QTest>
#include <memory>

using namespace vantle;
using vantle::testing::MockedBus;

namespace {
const QString kLogind = QStringLiteral("org.freedesktop.login1");
} // namespace

// Takes and drops logind's idle inhibitor on python-dbusmock's logind, served on a private bus
// that stands in for both the system and the session bus.
class TestLogindPowerAssertion : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<MockedBus> m_bus;

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
        m_bus = std::make_unique<MockedBus>();
        VANTLE_SKIP_WITHOUT(*m_bus);
    }
    void cleanup() { m_bus.reset(); }

    void inhibitorIsListedOnlyWhileHeld() {
        QVERIFY(m_bus->start(QStringLiteral("logind"), kLogind));

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
