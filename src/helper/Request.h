#pragma once

#include "PowerEvent.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace vantle::power {

enum class Command { help, schedule, cancel, apply, list, rtcArm };

// One change of an `apply` command. A failed cancel does not stop the batch, so the app can
// cancel what it registered before without knowing whether it is still there.
struct Step {
    bool cancel = false;
    PowerEvent event;

    bool operator==(const Step&) const = default;
};

// What the command line asks for, every argument checked.
struct Request {
    Command command = Command::help;
    std::optional<std::filesystem::path> root;
    // The event of schedule and cancel.
    PowerEvent event;
    // The changes of apply, in order.
    std::vector<Step> steps;
};

// The most changes one apply may carry; far more than any set of weekly schedules needs.
inline constexpr std::size_t maxSteps = 256;

// Parses the arguments after the program name. Throws Failure(exitUsage) for anything it does not
// accept; an argument is echoed in the message only as a short, printable prefix.
Request parseRequest(std::span<const std::string_view> args);

} // namespace vantle::power
