#pragma once

#include <compare>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace vantle::power {

// A local wall-clock time in 2000-2099, the only years a two-digit year can name.
struct EventDate {
    int year = 2000;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;

    auto operator<=>(const EventDate&) const = default;
};

// Fixed-width layouts: each of y M d H m s stands for one digit, anything else for itself.
inline constexpr std::string_view argumentLayout = "MM/dd/yy HH:mm:ss";   // the command line
inline constexpr std::string_view stampLayout = "yyyyMMddTHHmmss";        // unit names
inline constexpr std::string_view calendarLayout = "yyyy-MM-dd HH:mm:ss"; // OnCalendar=
inline constexpr std::string_view listingLayout = "MM/dd/yyyy HH:mm:ss";  // -g sched

// Only ASCII digits where digits belong and a real date; a two-digit year is 20yy.
std::optional<EventDate> parseDate(std::string_view layout, std::string_view text);
std::string formatDate(const EventDate& date, std::string_view layout);

// Seconds since the epoch in the system's time zone; nullopt when it cannot be represented.
std::optional<std::time_t> epochSeconds(const EventDate& date);

} // namespace vantle::power
