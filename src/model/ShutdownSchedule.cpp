#include "model/ShutdownSchedule.h"

#include "model/JsonFields.h"

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
