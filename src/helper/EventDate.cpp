#include "EventDate.h"

namespace vantle::power {
namespace {

bool isLeapYear(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysInMonth(int year, int month) {
    static constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : days[month - 1];
}

bool isValid(const EventDate& date) {
    return date.year >= 2000 && date.year <= 2099 && date.month >= 1 && date.month <= 12 &&
           date.day >= 1 && date.day <= daysInMonth(date.year, date.month) && date.hour <= 23 &&
           date.minute <= 59 && date.second <= 59;
}

int* fieldFor(EventDate& date, char letter) {
    switch (letter) {
    case 'y':
        return &date.year;
    case 'M':
        return &date.month;
    case 'd':
        return &date.day;
    case 'H':
        return &date.hour;
    case 'm':
        return &date.minute;
    case 's':
        return &date.second;
    default:
        return nullptr;
    }
}

} // namespace

std::optional<EventDate> parseDate(std::string_view layout, std::string_view text) {
    if (text.size() != layout.size()) {
        return std::nullopt;
    }
    EventDate date{0, 0, 0, 0, 0, 0};
    for (std::size_t i = 0; i < layout.size(); ++i) {
        int* field = fieldFor(date, layout[i]);
        if (!field && text[i] != layout[i]) {
            return std::nullopt;
        }
        if (field && (text[i] < '0' || text[i] > '9')) {
            return std::nullopt;
        }
        if (field) {
            *field = *field * 10 + (text[i] - '0');
        }
    }
    if (layout.find("yyy") == std::string_view::npos) {
        date.year += 2000;
    }
    return isValid(date) ? std::optional(date) : std::nullopt;
}

// Fills each run of a field's letters from the right with that field's last digits.
std::string formatDate(const EventDate& date, std::string_view layout) {
    std::string text(layout);
    EventDate rest = date;
    for (std::size_t i = text.size(); i-- > 0;) {
        if (int* field = fieldFor(rest, text[i])) {
            text[i] = static_cast<char>('0' + *field % 10);
            *field /= 10;
        }
    }
    return text;
}

std::optional<std::time_t> epochSeconds(const EventDate& date) {
    std::tm local{};
    local.tm_year = date.year - 1900;
    local.tm_mon = date.month - 1;
    local.tm_mday = date.day;
    local.tm_hour = date.hour;
    local.tm_min = date.minute;
    local.tm_sec = date.second;
    local.tm_isdst = -1; // the zone's rules decide whether summer time applies
    const std::time_t seconds = std::mktime(&local);
    return seconds == std::time_t(-1) ? std::nullopt : std::optional(seconds);
}

} // namespace vantle::power
