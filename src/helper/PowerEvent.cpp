#include "PowerEvent.h"

namespace vantle::power {

std::string_view kindWord(EventKind kind) {
    switch (kind) {
    case EventKind::wake:
        return "wake";
    case EventKind::restart:
        return "restart";
    case EventKind::poweron:
        return "poweron";
    }
    return "wake";
}

std::optional<EventKind> parseKind(std::string_view word) {
    for (EventKind kind : {EventKind::wake, EventKind::restart, EventKind::poweron}) {
        if (word == kindWord(kind)) {
            return kind;
        }
    }
    return std::nullopt;
}

std::string PowerEvent::unitStem() const {
    return std::string(unitPrefix) + std::string(kindWord(kind)) + '-' +
           formatDate(date, stampLayout);
}

std::optional<PowerEvent> PowerEvent::fromTimerName(std::string_view name) {
    constexpr std::string_view suffix = ".timer";
    if (!name.starts_with(unitPrefix) || !name.ends_with(suffix)) {
        return std::nullopt;
    }
    name.remove_prefix(unitPrefix.size());
    name.remove_suffix(suffix.size());
    const auto dash = name.find('-');
    if (dash == std::string_view::npos) {
        return std::nullopt;
    }
    const auto kind = parseKind(name.substr(0, dash));
    const auto date = parseDate(stampLayout, name.substr(dash + 1));
    if (!kind || !date) {
        return std::nullopt;
    }
    return PowerEvent{*kind, *date};
}

std::strong_ordering PowerEvent::operator<=>(const PowerEvent& other) const {
    if (const auto order = date <=> other.date; order != 0) {
        return order;
    }
    return kindWord(kind) <=> kindWord(other.kind);
}

} // namespace vantle::power
