#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

struct Result {
    int exitCode = -1;
    QString out;
    QString err;
};

Result runProgram(const QString& program, const QStringList& arguments) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    // The tool must keep to the system's zone, as systemd does, whatever the caller's TZ says.
    env.insert(u"TZ"_s, u"Pacific/Kiritimati"_s);
    process.setProcessEnvironment(env);
    process.start(program, arguments);
    if (!process.waitForFinished(30'000)) {
        process.kill();
        process.waitForFinished();
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

const QString header = u"Scheduled power events:\n"_s;
const QString unitDir = u"etc/systemd/system/"_s;
const QString wakeAlarm = u"sys/class/rtc/rtc0/wakealarm"_s;

} // namespace

class TestVantlePower : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_root;

    QString path(const QString& relative) const { return m_root->filePath(relative); }

    Result power(const QStringList& arguments) const {
        return runProgram(QStringLiteral(VANTLE_POWER_BINARY),
                          QStringList{u"--root"_s, m_root->path()} + arguments);
    }

    // Everything the tool has put under etc/, links and hidden temporaries included.
    QStringList writtenFiles() const {
        QStringList files;
        QDirIterator it(path(u"etc"_s), QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            files << it.next();
        }
        return files;
    }

    // The listing, which succeeds whatever else fails.
    QString listing() const {
        const Result list = power({u"-g"_s, u"sched"_s});
        return list.exitCode == 0 ? list.out : u"failed: "_s + list.err;
    }

    QByteArray readFile(const QString& relative) const {
        QFile file(path(relative));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }

    void scheduleAll(const QList<QStringList>& events) {
        for (const QStringList& event : events) {
            const Result result = power(QStringList{u"schedule"_s} + event);
            QVERIFY2(result.exitCode == 0, qPrintable(result.err));
        }
    }

private slots:
    void initTestCase() {
        // Expected epochs are computed in the system's zone, the one the tool uses.
        qunsetenv("TZ");
    }

    // A machine running systemd with a clock alarm; tests take away what they do without.
    void init() {
        m_root = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir(m_root->path()).mkpath(u"run/systemd/system"_s));
        QVERIFY(QDir(m_root->path()).mkpath(u"sys/class/rtc/rtc0"_s));
        QFile alarm(path(wakeAlarm));
        QVERIFY(alarm.open(QIODevice::WriteOnly));
        alarm.write("untouched\n");
    }

    void roundTrip() {
        QCOMPARE(listing(), header);

        scheduleAll({{u"wake"_s, u"11/17/98 07:30:00"_s},
                     {u"poweron"_s, u"11/18/98 06:00:00"_s},
                     {u"restart"_s, u"11/17/98 07:30:00"_s},
                     {u"wake"_s, u"11/17/98 07:30:00"_s}});
        QCOMPARE(listing(), header + u" [0]  restart at 11/17/2098 07:30:00 by 'vantle'\n"
                                     u" [1]  wake at 11/17/2098 07:30:00 by 'vantle'\n"
                                     u" [2]  poweron at 11/18/2098 06:00:00 by 'vantle'\n"_s);

        // Enabled the way systemctl enable does it, by links that resolve to the units.
        for (const QString& link :
             {u"timers.target.wants/vantle-power-wake-20981117T073000.timer"_s,
              u"timers.target.wants/vantle-power-poweron-20981118T060000.timer"_s,
              u"multi-user.target.wants/vantle-power-rtc.service"_s}) {
            const QFileInfo info(path(unitDir + link));
            QVERIFY2(info.isSymLink() && info.exists(), qPrintable(link));
        }

        QCOMPARE(power({u"schedule"_s, u"cancel"_s, u"wake"_s, u"11/17/98 07:30:00"_s}).exitCode,
                 0);
        QCOMPARE(listing(), header + u" [0]  restart at 11/17/2098 07:30:00 by 'vantle'\n"
                                     u" [1]  poweron at 11/18/2098 06:00:00 by 'vantle'\n"_s);
        QVERIFY(writtenFiles().filter(u"-wake-"_s).isEmpty());

        for (const QStringList& missing : {QStringList{u"wake"_s, u"11/17/98 07:30:00"_s},
                                           QStringList{u"restart"_s, u"11/17/98 07:30:01"_s}}) {
            const Result cancel = power(QStringList{u"schedule"_s, u"cancel"_s} + missing);
            QVERIFY(cancel.exitCode != 0);
            QVERIFY2(cancel.err.startsWith(u"vantle-power: no such event"_s),
                     qPrintable(cancel.err));
        }
    }

    // One run carries the sync's whole change: a cancel that finds nothing is passed over, the
    // rest happens in order.
    void applyRunsABatchInOrder() {
        scheduleAll({{u"wake"_s, u"11/17/98 07:30:00"_s}});
        const Result batch =
            power({u"apply"_s, u"cancel"_s, u"restart"_s, u"01/01/98 00:00:00"_s, u"cancel"_s,
                   u"wake"_s, u"11/17/98 07:30:00"_s, u"schedule"_s, u"poweron"_s,
                   u"11/18/98 06:00:00"_s, u"schedule"_s, u"wake"_s, u"11/18/98 05:55:00"_s});
        QCOMPARE(batch.exitCode, 0);
        QVERIFY2(batch.err.contains(u"no such event: restart"_s), qPrintable(batch.err));
        QCOMPARE(listing(), header + u" [0]  wake at 11/18/2098 05:55:00 by 'vantle'\n"
                                     u" [1]  poweron at 11/18/2098 06:00:00 by 'vantle'\n"_s);
        QVERIFY(writtenFiles().filter(u"-wake-20981117"_s).isEmpty());
    }

    void acceptsRealDates_data() {
        QTest::addColumn<QString>("date");
        QTest::addColumn<QString>("listed");
        QTest::newRow("leap day") << u"02/29/96 12:00:00"_s << u"02/29/2096 12:00:00"_s;
        QTest::newRow("leap day of 2000") << u"02/29/00 08:05:09"_s << u"02/29/2000 08:05:09"_s;
        QTest::newRow("first second") << u"01/01/00 00:00:00"_s << u"01/01/2000 00:00:00"_s;
        QTest::newRow("last second") << u"12/31/99 23:59:59"_s << u"12/31/2099 23:59:59"_s;
        QTest::newRow("end of April") << u"04/30/98 19:45:30"_s << u"04/30/2098 19:45:30"_s;
    }
    void acceptsRealDates() {
        QFETCH(QString, date);
        QFETCH(QString, listed);
        scheduleAll({{u"wake"_s, date}});
        QCOMPARE(listing(), header + u" [0]  wake at "_s + listed + u" by 'vantle'\n"_s);
    }

    void rejectsBadArguments_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("nothing") << QStringList();
        QTest::newRow("unknown command") << QStringList{u"sched"_s};
        QTest::newRow("-g alone") << QStringList{u"-g"_s};
        QTest::newRow("-g other") << QStringList{u"-g"_s, u"schedule"_s};
        QTest::newRow("-g extra") << QStringList{u"-g"_s, u"sched"_s, u"now"_s};
        QTest::newRow("rtc-arm extra") << QStringList{u"rtc-arm"_s, u"now"_s};
        const QString good = u"11/17/98 07:30:00"_s;
        QTest::newRow("unknown word") << QStringList{u"schedule"_s, u"sleep"_s, good};
        QTest::newRow("word in capitals") << QStringList{u"schedule"_s, u"Wake"_s, good};
        QTest::newRow("missing date") << QStringList{u"schedule"_s, u"wake"_s};
        QTest::newRow("extra argument") << QStringList{u"schedule"_s, u"wake"_s, good, u"x"_s};
        QTest::newRow("date in two")
            << QStringList{u"schedule"_s, u"wake"_s, u"11/17/98"_s, u"07:30:00"_s};
        QTest::newRow("cancel without word") << QStringList{u"schedule"_s, u"cancel"_s, good};
        QTest::newRow("cancel extra")
            << QStringList{u"schedule"_s, u"cancel"_s, u"wake"_s, good, u"x"_s};
        QTest::newRow("cancel hostile")
            << QStringList{u"schedule"_s, u"cancel"_s, u"wake"_s, u"$(systemctl halt)"_s};
        QTest::newRow("apply alone") << QStringList{u"apply"_s};
        QTest::newRow("apply short") << QStringList{u"apply"_s, u"schedule"_s, u"wake"_s};
        QTest::newRow("apply unknown change") << QStringList{u"apply"_s, u"add"_s, u"wake"_s, good};
        // Nothing is written when any change of the batch is bad, however late it comes.
        QTest::newRow("apply bad second date")
            << QStringList{u"apply"_s, u"schedule"_s,         u"wake"_s, good, u"schedule"_s,
                           u"wake"_s,  u"11/17/98 07:30:0;"_s};
        // Most are 17 characters long, so the length alone does not reject them.
        const QList<std::pair<const char*, QString>> dates = {
            {"quote", u"11/17/98 07:30:0'"_s},
            {"semicolon", u"11/17/98 07:30:0;"_s},
            {"command substitution", u"$(systemctl halt)"_s},
            {"backticks", u"11/17/98 `reboot`"_s},
            {"newline for space", u"11/17/98\n07:30:00"_s},
            {"trailing newline", u"11/17/98 07:30:00\n"_s},
            {"trailing space", u"11/17/98 07:30:00 "_s},
            {"space for zero", u" 1/17/98 07:30:00"_s},
            {"sign", u"+1/17/98 07:30:00"_s},
            {"dashes", u"11-17-98 07:30:00"_s},
            {"four-digit year", u"11/17/2098 07:30:00"_s},
            {"no seconds", u"11/17/98 07:30"_s},
            {"empty", QString()},
            {"month 00", u"00/17/98 07:30:00"_s},
            {"month 13", u"13/17/98 07:30:00"_s},
            {"day 00", u"11/00/98 07:30:00"_s},
            {"day 32", u"01/32/98 07:30:00"_s},
            {"April 31", u"04/31/98 07:30:00"_s},
            {"February 29 of a common year", u"02/29/98 07:30:00"_s},
            {"February 30 of a leap year", u"02/30/96 07:30:00"_s},
            {"hour 24", u"11/17/98 24:00:00"_s},
            {"minute 60", u"11/17/98 07:60:00"_s},
            {"second 60", u"11/17/98 07:30:60"_s},
        };
        for (const auto& [name, date] : dates) {
            QTest::newRow(name) << QStringList{u"schedule"_s, u"poweron"_s, date};
        }
    }
    void rejectsBadArguments() {
        QFETCH(QStringList, arguments);
        const Result result = power(arguments);
        QCOMPARE(result.exitCode, 64);
        QVERIFY2(result.err.startsWith(u"vantle-power: "_s), qPrintable(result.err));
        QVERIFY(result.err.contains(u"usage:"_s));
        QCOMPARE(result.out, QString());
        QCOMPARE(writtenFiles(), QStringList());
    }

    void unitFilesPassSystemdVerify() {
        const QString analyze = QStandardPaths::findExecutable(u"systemd-analyze"_s);
        QVERIFY2(!analyze.isEmpty(), "systemd-analyze is missing: 'scripts/dev deps' installs it");
        scheduleAll({{u"wake"_s, u"11/17/98 07:30:00"_s},
                     {u"restart"_s, u"03/01/97 23:00:05"_s},
                     {u"poweron"_s, u"02/29/96 06:00:00"_s}});

        QStringList units;
        for (const QFileInfo& unit :
             QDir(path(unitDir)).entryInfoList({u"*.timer"_s, u"*.service"_s}, QDir::Files)) {
            units << unit.filePath();
        }
        QCOMPARE(units.size(), 7); // three timers, their services and the shutdown hook
        const Result verify = runProgram(analyze, QStringList{u"verify"_s, u"--man=no"_s} + units);
        QVERIFY2(verify.exitCode == 0, qPrintable(verify.err));
        QCOMPARE(verify.err + verify.out, QString());

        const QList<std::pair<QString, QString>> calendars = {
            {u"vantle-power-wake-20981117T073000.timer"_s, u"2098-11-17 07:30:00"_s},
            {u"vantle-power-restart-20970301T230005.timer"_s, u"2097-03-01 23:00:05"_s},
            {u"vantle-power-poweron-20960229T060000.timer"_s, u"2096-02-29 06:00:00"_s}};
        const QRegularExpression onCalendar(u"^OnCalendar=(.*)$"_s,
                                            QRegularExpression::MultilineOption);
        for (const auto& [timer, normalized] : calendars) {
            const auto match = onCalendar.match(QString::fromUtf8(readFile(unitDir + timer)));
            QVERIFY2(match.hasMatch(), qPrintable(timer));
            const Result calendar = runProgram(analyze, {u"calendar"_s, match.captured(1)});
            QVERIFY2(calendar.exitCode == 0, qPrintable(calendar.err));
            QVERIFY2(calendar.out.contains(u"Normalized form: "_s + normalized + u'\n'),
                     qPrintable(calendar.out));
        }
    }

    void unavailableWithoutSystemdOrClock_data() {
        QTest::addColumn<bool>("systemd");
        QTest::addColumn<bool>("clock");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("error");
        const QString date = u"11/17/98 07:30:00"_s;
        const QString noSystemd = u"this machine does not run systemd"_s;
        const QString noClock = u"this machine has no real-time clock wake alarm"_s;
        for (const QString& word : {u"wake"_s, u"restart"_s, u"poweron"_s}) {
            QTest::addRow("%s without systemd", qPrintable(word))
                << false << true << QStringList{u"schedule"_s, word, date} << noSystemd;
            QTest::addRow("%s without the clock", qPrintable(word))
                << true << false << QStringList{u"schedule"_s, word, date}
                << (word == u"poweron"_s ? noClock : QString());
        }
        QTest::newRow("rtc-arm without the clock")
            << true << false << QStringList{u"rtc-arm"_s} << noClock;
    }
    void unavailableWithoutSystemdOrClock() {
        QFETCH(bool, systemd);
        QFETCH(bool, clock);
        QFETCH(QStringList, arguments);
        QFETCH(QString, error);
        if (!systemd) {
            QVERIFY(QDir(path(u"run"_s)).removeRecursively());
        }
        if (!clock) {
            QVERIFY(QFile::remove(path(wakeAlarm)));
        }
        const Result result = power(arguments);
        if (error.isEmpty()) {
            QVERIFY2(result.exitCode == 0, qPrintable(result.err));
            return;
        }
        QCOMPARE(result.exitCode, 69);
        QCOMPARE(result.err, u"vantle-power: unavailable: "_s + error + u'\n');
        QCOMPARE(writtenFiles(), QStringList());
        QCOMPARE(listing(), header);
    }

    void rtcArmSetsEarliestFuturePowerOn_data() {
        QTest::addColumn<QList<int>>("powerOnDays");
        QTest::addColumn<QList<int>>("wakeDays");
        QTest::addColumn<int>("armedDay"); // 0: nothing armed
        QTest::newRow("earliest of several") << QList<int>{3, 1, 2} << QList<int>() << 1;
        QTest::newRow("past ones skipped") << QList<int>{-1, 2, -3} << QList<int>() << 2;
        QTest::newRow("only past ones") << QList<int>{-1} << QList<int>() << 0;
        QTest::newRow("wake does not arm") << QList<int>() << QList<int>{1} << 0;
        QTest::newRow("earlier wake ignored") << QList<int>{2} << QList<int>{1} << 2;
        QTest::newRow("nothing scheduled") << QList<int>() << QList<int>() << 0;
    }
    void rtcArmSetsEarliestFuturePowerOn() {
        QFETCH(QList<int>, powerOnDays);
        QFETCH(QList<int>, wakeDays);
        QFETCH(int, armedDay);
        // Mid-day, so no summer-time change makes the local time ambiguous.
        const QDateTime base(QDate::currentDate(), QTime(12, 34, 56));
        const auto at = [&](int days) { return base.addDays(days); };
        for (const auto& [word, days] :
             {std::pair(u"poweron"_s, powerOnDays), std::pair(u"wake"_s, wakeDays)}) {
            for (int day : days) {
                scheduleAll({{word, at(day).toString(u"MM/dd/yy HH:mm:ss"_s)}});
            }
        }
        const Result arm = power({u"rtc-arm"_s});
        QVERIFY2(arm.exitCode == 0, qPrintable(arm.err));
        const QByteArray expected =
            armedDay == 0 ? QByteArray("0") : QByteArray::number(at(armedDay).toSecsSinceEpoch());
        QCOMPARE(readFile(wakeAlarm), expected + '\n');
    }
};

QTEST_GUILESS_MAIN(TestVantlePower)
#include "tst_vantlepower.moc"
