#pragma once

#include "EventDate.h"

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace vantle::power {

enum class EventKind { wake, restart, poweron };

// The command-line word, which is also how the event is named on disk and in the listing.
std::string_view kindWord(EventKind kind);
std::optional<EventKind> parseKind(std::string_view word);

// One scheduled event. Its unit name carries both the kind and the date, so the files on disk
// alone say what is scheduled; a hand-edited unit body cannot make the listing lie.
struct PowerEvent {
    EventKind kind = EventKind::wake;
    EventDate date;

    // vantle-power-wake-20261117T073000, without a suffix.
    std::string unitStem() const;
    // The inverse of unitStem() + ".timer"; nullopt for any other file name.
    static std::optional<PowerEvent> fromTimerName(std::string_view fileName);

    // Listing order: by date, then by word.
    std::strong_ordering operator<=>(const PowerEvent& other) const;
    bool operator==(const PowerEvent& other) const = default;
};

inline constexpr std::string_view unitPrefix = "vantle-power-";

} // namespace vantle::power
