// vantle-power: hands Vantle's wake, restart and power-on times to systemd as one-shot timers.
// It runs as root, so it reads nothing from the environment and trusts no argument it has not
// checked completely; the app treats exit 69 as "not possible on this machine".

#include "EventStore.h"
#include "Failure.h"
#include "PowerEvent.h"
#include "Process.h"
#include "Request.h"
#include "UnitFiles.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <span>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

using namespace vantle::power;
namespace fs = std::filesystem;

namespace {

constexpr std::string_view usageText =
    "usage: vantle-power [--root DIR] schedule wake|restart|poweron 'MM/dd/yy HH:mm:ss'\n"
    "       vantle-power [--root DIR] schedule cancel wake|restart|poweron 'MM/dd/yy HH:mm:ss'\n"
    "       vantle-power [--root DIR] apply schedule|cancel EVENT 'DATE' [...]\n"
    "       vantle-power [--root DIR] -g sched\n"
    "       vantle-power [--root DIR] rtc-arm\n"
    "\n"
    "Schedules one-shot wake, restart and power-on events, in local time, as systemd timers.\n"
    "  apply        several schedules and cancels in one run, in order; a failed cancel\n"
    "               does not stop the others\n"
    "  -g sched     list the scheduled events\n"
    "  rtc-arm      set the real-time clock to wake for the next power-on (run at shutdown)\n"
    "  --root DIR   act on the files of a system under DIR: no root check, no systemctl\n";

void requireRoot(const Request& request) {
    if (!request.root && ::geteuid() != 0) {
        throw Failure(exitNotRoot, "must be run as root");
    }
}

void requireSystemd(const EventStore& store) {
    if (!store.runsSystemd()) {
        throw Failure(exitUnavailable, "unavailable: this machine does not run systemd");
    }
}

void requireWakeAlarm(const EventStore& store) {
    if (!store.hasWakeAlarm()) {
        throw Failure(exitUnavailable,
                      "unavailable: this machine has no real-time clock wake alarm");
    }
}

std::optional<std::time_t> nextPowerOn(const std::vector<PowerEvent>& events) {
    const std::time_t now = std::time(nullptr);
    std::optional<std::time_t> next;
    for (const PowerEvent& event : events) {
        const auto seconds = epochSeconds(event.date);
        if (event.kind == EventKind::poweron && seconds && *seconds > now &&
            (!next || *seconds < *next)) {
            next = seconds;
        }
    }
    return next;
}

void list(const EventStore& store) {
    std::cout << "Scheduled power events:\n";
    std::size_t index = 0;
    for (const PowerEvent& event : store.events()) {
        std::cout << " [" << index++ << "]  " << kindWord(event.kind) << " at "
                  << formatDate(event.date, listingLayout) << " by 'vantle'\n";
    }
    if (!std::cout.flush()) {
        throw Failure(exitFailed, "cannot write the listing");
    }
}

void schedule(EventStore& store, const PowerEvent& event, bool live) {
    const Programs programs = findPrograms();
    const bool isNew = !store.contains(event);
    store.add(event, programs);
    if (!live) {
        return;
    }
    try {
        runProgram(programs.systemctlPath, {"daemon-reload"});
        runProgram(programs.systemctlPath, {"start", event.unitStem() + ".timer"});
        if (event.kind == EventKind::poweron) {
            runProgram(programs.systemctlPath, {"start", std::string(rtcHookName)});
        }
    } catch (const Failure&) {
        // An event systemd did not take must not stay on disk and show up in the listing.
        if (isNew) {
            store.discard(event);
        }
        throw;
    }
}

void cancel(EventStore& store, const PowerEvent& event, bool live) {
    if (!store.contains(event)) {
        throw Failure(exitFailed, "no such event: " + std::string(kindWord(event.kind)) + " at " +
                                      formatDate(event.date, listingLayout));
    }
    if (!live) {
        store.remove(event);
        return;
    }
    const std::string systemctl = findPrograms().systemctlPath;
    // Stopped while its file still exists, so systemd is not left with an orphaned unit.
    runProgram(systemctl, {"stop", event.unitStem() + ".timer"});
    store.remove(event);
    runProgram(systemctl, {"daemon-reload"});
}

// The app's whole change in one run, so it needs one password dialog. Cancels go first in the
// app's batches; one that finds nothing to cancel is not an error.
void apply(EventStore& store, const std::vector<Step>& steps, bool live) {
    for (const Step& step : steps) {
        if (!step.cancel) {
            schedule(store, step.event, live);
            continue;
        }
        try {
            cancel(store, step.event, live);
        } catch (const Failure& failure) {
            std::cerr << "vantle-power: " << failure.what() << " (ignored)\n";
        }
    }
}

void run(const Request& request) {
    const bool live = !request.root;
    EventStore store(request.root.value_or("/"));
    switch (request.command) {
    case Command::help:
        std::cout << usageText;
        break;
    case Command::list:
        list(store);
        break;
    case Command::rtcArm:
        requireRoot(request);
        requireWakeAlarm(store);
        store.armWakeAlarm(nextPowerOn(store.events()));
        break;
    case Command::schedule:
        requireRoot(request);
        requireSystemd(store);
        if (request.event.kind == EventKind::poweron) {
            requireWakeAlarm(store);
        }
        schedule(store, request.event, live);
        break;
    case Command::cancel:
        requireRoot(request);
        requireSystemd(store);
        cancel(store, request.event, live);
        break;
    case Command::apply:
        requireRoot(request);
        requireSystemd(store);
        if (std::any_of(request.steps.begin(), request.steps.end(), [](const Step& step) {
                return !step.cancel && step.event.kind == EventKind::poweron;
            })) {
            requireWakeAlarm(store);
        }
        apply(store, request.steps, live);
        break;
    }
}

} // namespace

int main(int argc, char** argv) {
    // Nothing from the caller's environment reaches a root tool. Without TZ, local time is the
    // system's zone, the one systemd reads OnCalendar= in.
    ::clearenv();
    ::umask(022);
    try {
        // argv[0] may be missing altogether when the caller execs with an empty list.
        const std::span all(argv, static_cast<std::size_t>(std::max(argc, 0)));
        const std::vector<std::string_view> args(all.begin() + (all.empty() ? 0 : 1), all.end());
        run(parseRequest(args));
        return 0;
    } catch (const Failure& failure) {
        std::cerr << "vantle-power: " << failure.what() << '\n';
        if (failure.exitCode() == exitUsage) {
            std::cerr << usageText;
        }
        return failure.exitCode();
    } catch (const std::exception& error) {
        std::cerr << "vantle-power: " << error.what() << '\n';
        return exitFailed;
    }
}
