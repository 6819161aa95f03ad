#pragma once

#include "PowerEvent.h"
#include "Process.h"

#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vantle::power {

// The scheduled events as unit files under `root` ("/" for the running system), enabled the way
// systemctl enable does it, by a symlink in the target's .wants folder. Every file is replaced
// atomically; failures are thrown as Failure.
class EventStore {
public:
    explicit EventStore(std::filesystem::path root);

    bool runsSystemd() const;
    bool hasWakeAlarm() const;

    // Sorted for the listing; files that are not ours are ignored.
    std::vector<PowerEvent> events() const;
    bool contains(const PowerEvent& event) const;

    // Writes and enables the event's timer and service, and for a power-on the shutdown hook.
    // Leaves nothing behind when a new event fails half-way.
    void add(const PowerEvent& event, const Programs& programs);
    void remove(const PowerEvent& event);
    // remove() for undoing an add() that failed, when another error is already being reported.
    void discard(const PowerEvent& event) noexcept;

    // Clears the alarm, then sets it to `epochSeconds` when given.
    void armWakeAlarm(std::optional<std::time_t> epochSeconds);

private:
    void writeFile(const std::filesystem::path& path, const std::string& text);
    void enable(const std::string& unitName, const std::string& target);
    void disable(const std::string& unitName, const std::string& target);
    std::filesystem::path unitPath(const std::string& unitName) const;

    std::filesystem::path m_root;
    std::filesystem::path m_unitDir;
};

} // namespace vantle::power
