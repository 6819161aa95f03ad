#include "model/ShutdownSchedule.h"

#include "model/JsonFields.h"

#include <QSet>

namespace vantle {

namespace {

// Canonical hyphenated form only: 8-4-4-4-12 hexadecimal digits, either case.
bool isCanonicalUuid(const QString& text) {
    if (text.size() != 36) {
        return false;
    }
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        const bool hyphenPosition = i == 8 || i == 13 || i == 18 || i == 23;
        const char16_t u = c.unicode();
        const bool hex =
            (u >= u'0' && u <= u'9') || (u >= u'a' && u <= u'f') || (u >= u'A' && u <= u'F');
        if (hyphenPosition ? u != u'-' : !hex) {
            return false;
        }
    }
    return true;
}

} // namespace

bool ShutdownSchedule::occursOn(const QDate& date) const {
    return days.contains(weekdayOf(date));
}

std::optional<QString> ShutdownSchedule::problem() const {
    if (hour < 0 || hour > 23) {
        return QStringLiteral("its hour is outside 0-23");
    }
    if (minute < 0 || minute > 59) {
        return QStringLiteral("its minute is outside 0-59");
    }
    return std::nullopt;
}

QList<ScheduleProblem> findScheduleProblems(const QList<ShutdownSchedule>& schedules) {
    QList<ScheduleProblem> problems;
    QSet<QUuid> seen;
    for (qsizetype i = 0; i < schedules.size(); ++i) {
        const ShutdownSchedule& schedule = schedules[i];
        if (const std::optional<QString> reason = schedule.problem()) {
            problems.append({i, *reason});
        } else if (seen.contains(schedule.id)) {
            problems.append({i, QStringLiteral("its id repeats an earlier schedule's")});
        }
        seen.insert(schedule.id);
    }
    return problems;
}

QList<ShutdownSchedule> usableSchedules(const QList<ShutdownSchedule>& schedules) {
    const QList<ScheduleProblem> problems = findScheduleProblems(schedules);
    if (problems.isEmpty()) {
        return schedules;
    }
    QList<ShutdownSchedule> usable;
    qsizetype next = 0;
    for (qsizetype i = 0; i < schedules.size(); ++i) {
        if (next < problems.size() && problems[next].index == i) {
            ++next;
        } else {
            usable.append(schedules[i]);
        }
    }
    return usable;
}

QString describeSchedule(const ShutdownSchedule& schedule) {
    return QStringLiteral("%1 at %2:%3 (id %4)")
        .arg(rawValue(schedule.action))
        .arg(schedule.hour, 2, 10, QLatin1Char('0'))
        .arg(schedule.minute, 2, 10, QLatin1Char('0'))
        .arg(schedule.id.toString(QUuid::WithoutBraces).toUpper());
}

std::optional<ShutdownSchedule::Weekday> ShutdownSchedule::weekdayFromInt(qint64 value) {
    if (value < 1 || value > 7) {
        return std::nullopt;
    }
    return static_cast<Weekday>(value);
}

ShutdownSchedule::Weekday ShutdownSchedule::weekdayOf(const QDate& date) {
    // QDate: Monday 1 … Sunday 7. Calendar numbering: Sunday 1 … Saturday 7.
    return static_cast<Weekday>(date.dayOfWeek() % 7 + 1);
}

QByteArray encodeShutdownSchedules(const QList<ShutdownSchedule>& schedules) {
    QList<QByteArray> elements;
    elements.reserve(schedules.size());
    for (const ShutdownSchedule& schedule : schedules) {
        QJsonArray days;
        for (const ShutdownSchedule::Weekday day : schedule.days) {
            days.append(static_cast<int>(day));
        }
        elements.append(json::orderedObject({
            {"id", schedule.id.toString(QUuid::WithoutBraces).toUpper()},
            {"isEnabled", schedule.isEnabled},
            {"action", rawValue(schedule.action)},
            {"days", days},
            {"hour", schedule.hour},
            {"minute", schedule.minute},
        }));
    }
    return json::array(elements);
}

std::optional<QList<ShutdownSchedule>> decodeShutdownSchedules(const QByteArray& document) {
    using Schedule = ShutdownSchedule;
    return json::decodeArray<Schedule>(
        document, [](const QJsonObject& object) -> std::optional<Schedule> {
            const auto idText = json::stringField(object, "id");
            const auto isEnabled = json::boolField(object, "isEnabled");
            const auto actionText = json::stringField(object, "action");
            const auto action =
                actionText ? fromRawValue<Schedule::Action>(*actionText) : std::nullopt;
            const auto hour = json::integerField(object, "hour");
            const auto minute = json::integerField(object, "minute");
            const QJsonValue daysValue = object.value(QLatin1String("days"));
            if (!idText || !isCanonicalUuid(*idText) || !isEnabled || !action || !hour || !minute ||
                !daysValue.isArray()) {
                return std::nullopt;
            }
            Schedule schedule;
            schedule.id = QUuid::fromString(*idText);
            schedule.isEnabled = *isEnabled;
            schedule.action = *action;
            schedule.hour = *hour;
            schedule.minute = *minute;
            for (const QJsonValue& dayValue : daysValue.toArray()) {
                const auto number = json::integerValue(dayValue);
                const auto day = number ? Schedule::weekdayFromInt(*number) : std::nullopt;
                if (!day) {
                    return std::nullopt;
                }
                schedule.days.insert(*day);
            }
            return schedule;
        });
}

} // namespace vantle
