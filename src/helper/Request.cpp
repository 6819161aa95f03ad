#include "Request.h"

#include "Failure.h"

#include <string>

namespace vantle::power {
namespace fs = std::filesystem;

namespace {

Failure usageError(const std::string& message) {
    return Failure(exitUsage, message);
}

// Hostile arguments are echoed back only as printable ASCII, and not at any length.
std::string printable(std::string_view text) {
    std::string shown;
    for (char c : text.substr(0, 40)) {
        shown += c >= ' ' && c <= '~' ? c : '?';
    }
    return shown + (text.size() > 40 ? "..." : "");
}

PowerEvent parseEvent(std::string_view word, std::string_view date) {
    const auto kind = parseKind(word);
    if (!kind) {
        throw usageError("unknown event '" + printable(word) +
                         "', expected wake, restart or poweron");
    }
    const auto parsed = parseDate(argumentLayout, date);
    if (!parsed) {
        throw usageError("invalid date '" + printable(date) +
                         "', expected MM/dd/yy HH:mm:ss naming a real day in 2000-2099");
    }
    return PowerEvent{*kind, *parsed};
}

std::vector<Step> parseSteps(std::span<const std::string_view> args) {
    if (args.empty() || args.size() % 3 != 0 || args.size() / 3 > maxSteps) {
        throw usageError("apply needs one to " + std::to_string(maxSteps) +
                         " changes of three words each");
    }
    std::vector<Step> steps;
    for (std::size_t i = 0; i < args.size(); i += 3) {
        if (args[i] != "schedule" && args[i] != "cancel") {
            throw usageError("unknown change '" + printable(args[i]) +
                             "', expected schedule or cancel");
        }
        steps.push_back(Step{args[i] == "cancel", parseEvent(args[i + 1], args[i + 2])});
    }
    return steps;
}

} // namespace

Request parseRequest(std::span<const std::string_view> all) {
    std::span<const std::string_view> args = all;
    Request request;
    if (args.size() >= 2 && args[0] == "--root") {
        std::error_code error;
        if (!args[1].starts_with('/') || !fs::is_directory(args[1], error)) {
            throw usageError("--root needs an absolute path to a folder");
        }
        request.root = fs::path(args[1]);
        args = args.subspan(2);
    }
    if (args.empty()) {
        throw usageError("missing command");
    }
    const std::string_view command = args[0];
    if (command == "--help" && args.size() == 1) {
        request.command = Command::help;
    } else if (command == "-g" && args.size() == 2 && args[1] == "sched") {
        request.command = Command::list;
    } else if (command == "rtc-arm" && args.size() == 1) {
        request.command = Command::rtcArm;
    } else if (command == "schedule" && args.size() == 3 && args[1] != "cancel") {
        request.command = Command::schedule;
        request.event = parseEvent(args[1], args[2]);
    } else if (command == "schedule" && args.size() == 4 && args[1] == "cancel") {
        request.command = Command::cancel;
        request.event = parseEvent(args[2], args[3]);
    } else if (command == "apply") {
        request.command = Command::apply;
        request.steps = parseSteps(args.subspan(1));
    } else {
        throw usageError("unrecognised arguments");
    }
    return request;
}

} // namespace vantle::power
