#include "UnitFiles.h"

namespace vantle::power {
namespace {

constexpr std::string_view managedNote = "# Written by vantle-power; it rewrites or removes this "
                                         "file, so edits here do not last.\n";

std::string description(const PowerEvent& event) {
    return "Description=Vantle scheduled " + std::string(kindWord(event.kind)) + " at " +
           formatDate(event.date, calendarLayout) + "\n";
}

} // namespace

// No Persistent=: an event missed while the machine was off must not fire at the next boot,
// least of all a restart.
std::string timerUnit(const PowerEvent& event) {
    return std::string(managedNote) + "[Unit]\n" + description(event) +
           "\n[Timer]\nOnCalendar=" + formatDate(event.date, calendarLayout) +
           "\nWakeSystem=true\nAccuracySec=1s\nUnit=" + event.unitStem() +
           ".service\n\n[Install]\nWantedBy=timers.target\n";
}

// Waking from sleep is the timer's own doing, so wake and power-on services have nothing to do.
std::string serviceUnit(const PowerEvent& event, const Programs& programs) {
    const std::string command =
        event.kind == EventKind::restart ? programs.systemctlPath + " reboot" : programs.truePath;
    return std::string(managedNote) + "[Unit]\n" + description(event) +
           "\n[Service]\nType=oneshot\nExecStart=" + command + "\n";
}

// Active from boot and stopped at shutdown, when ExecStop arms the clock; the ordering keeps
// /etc and /sys available until it has run.
std::string rtcHookUnit(const Programs& programs) {
    return std::string(managedNote) +
           "[Unit]\nDescription=Vantle: arm the real-time clock for the next scheduled power-on\n"
           "DefaultDependencies=no\nAfter=sysinit.target local-fs.target\n"
           "Before=shutdown.target\nConflicts=shutdown.target\n\n"
           "[Service]\nType=oneshot\nRemainAfterExit=yes\nExecStart=" +
           programs.truePath + "\nExecStop=" + programs.selfPath +
           " rtc-arm\n\n[Install]\nWantedBy=multi-user.target\n";
}

} // namespace vantle::power
