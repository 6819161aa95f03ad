#include "schedule/PmsetCommands.h"

#include <QRegularExpression>
#include <QSet>

namespace vantle {

namespace {

constexpr qint64 kMinutesPerDay = 1440;
constexpr qint64 kWakeLeadMinutes = 5;
constexpr qint64 kMinimumLeadMs = 60'000;

using Weekday = ShutdownSchedule::Weekday;

Weekday dayBefore(Weekday day) {
    return day == Weekday::sunday ? Weekday::saturday
                                  : static_cast<Weekday>(static_cast<int>(day) - 1);
}

ShutdownSchedule wakeBefore(const ShutdownSchedule& shutdown) {
    ShutdownSchedule wake;
    wake.action = ShutdownSchedule::Action::wake;
    qint64 time = shutdown.hour * 60 + shutdown.minute;
    if (time >= kWakeLeadMinutes) {
        time -= kWakeLeadMinutes;
        wake.days = shutdown.days;
    } else {
        time += kMinutesPerDay - kWakeLeadMinutes;
        for (const Weekday day : shutdown.days) {
            wake.days.insert(dayBefore(day));
        }
    }
    time %= kMinutesPerDay;
    wake.hour = time / 60;
    wake.minute = time % 60;
    return wake;
}

bool isSchedulerEvent(ShutdownSchedule::Action action) {
    return !schedulerEventWord(action).isEmpty();
}

} // namespace

QString schedulerEventWord(ShutdownSchedule::Action action) {
    switch (action) {
    case ShutdownSchedule::Action::wake:
        return QStringLiteral("wake");
    case ShutdownSchedule::Action::restart:
        return QStringLiteral("restart");
    case ShutdownSchedule::Action::poweron:
        return QStringLiteral("poweron");
    case ShutdownSchedule::Action::sleep:
    case ShutdownSchedule::Action::shutdown:
        break;
    }
    return {};
}

QString schedulerDateText(const QDateTime& date) {
    return QLocale::c().toString(date, QStringLiteral("MM/dd/yy HH:mm:ss"));
}

QList<ShutdownSchedule> schedulerEventList(const QList<ShutdownSchedule>& stored) {
    // A schedule out of range never reaches a command; the settings log it once.
    const QList<ShutdownSchedule> schedules = usableSchedules(stored);
    QList<ShutdownSchedule> events;
    for (const ShutdownSchedule& schedule : schedules) {
        if (schedule.isEnabled && isSchedulerEvent(schedule.action)) {
            events.append(schedule);
        }
    }
    for (const ShutdownSchedule& schedule : schedules) {
        if (schedule.isEnabled && schedule.action == ShutdownSchedule::Action::shutdown) {
            events.append(wakeBefore(schedule));
        }
    }
    return events;
}

SchedulerCommands desiredSchedulerCommands(const QList<ShutdownSchedule>& events,
                                           const QDateTime& now, const PowerSchedulerTool& tool) {
    SchedulerCommands desired;
    QSet<QString> seen;
    for (const ShutdownSchedule& event : events) {
        const QString word = schedulerEventWord(event.action);
        if (event.hour < 0 || event.hour > 23 || event.minute < 0 || event.minute > 59) {
            continue;
        }
        const QTime time(static_cast<int>(event.hour), static_cast<int>(event.minute));
        for (int offset = 0; offset < 7; ++offset) {
            const QDate day = now.date().addDays(offset);
            if (!event.occursOn(day)) {
                continue;
            }
            // Same zone as `now`; a time skipped by daylight saving moves past the gap, as the
            // scheduler itself would read it.
            QDateTime date = now;
            date.setDate(day);
            date.setTime(time);
            if (!date.isValid()) {
                continue;
            }
            if (now.msecsTo(date) <= kMinimumLeadMs) {
                continue;
            }
            const QString dateText = schedulerDateText(date);
            const QString key = word + QLatin1Char('|') + dateText;
            if (!seen.contains(key)) {
                seen.insert(key);
                desired.keys.append(key);
                desired.commands.append(
                    QStringLiteral("%1 schedule %2 '%3'").arg(tool.shellPath(), word, dateText));
            }
            break;
        }
    }
    return desired;
}

QStringList cancelSchedulerCommands(const QStringList& registeredKeys,
                                    const PowerSchedulerTool& tool) {
    QStringList commands;
    for (const QString& key : registeredKeys) {
        const QStringList parts = key.split(QLatin1Char('|'));
        if (parts.size() != 2 || parts[0].isEmpty() || parts[1].isEmpty()) {
            continue;
        }
        commands.append(QStringLiteral("%1 schedule cancel %2 '%3' || true")
                            .arg(tool.shellPath(), parts[0], parts[1]));
    }
    return commands;
}

QStringList parseSchedulerListing(const QString& output, const QString& marker) {
    static const QRegularExpression datePattern(
        QStringLiteral(R"(\d{2}/(\d{2})/(\d{4}) (\d{2}:\d{2}:\d{2}))"));
    static const QStringList words{QStringLiteral("wake"), QStringLiteral("restart"),
                                   QStringLiteral("poweron")};
    QStringList keys;
    for (const QString& line : output.split(QLatin1Char('\n'))) {
        if (!line.contains(marker)) {
            continue;
        }
        const QRegularExpressionMatch match = datePattern.match(line);
        if (!match.hasMatch()) {
            continue;
        }
        const QStringList dateAndTime = match.captured(0).split(QLatin1Char(' '));
        if (dateAndTime.size() != 2) {
            continue;
        }
        const QStringList date = dateAndTime[0].split(QLatin1Char('/'));
        if (date.size() != 3 || date[2].size() != 4) {
            continue;
        }
        const QString dateText = date[0] + QLatin1Char('/') + date[1] + QLatin1Char('/') +
                                 date[2].right(2) + QLatin1Char(' ') + dateAndTime[1];
        const auto word = std::find_if(words.cbegin(), words.cend(), [&line](const QString& w) {
            return line.contains(w + QStringLiteral(" at"));
        });
        if (word == words.cend()) {
            continue;
        }
        keys.append(*word + QLatin1Char('|') + dateText);
    }
    return keys;
}

} // namespace vantle
