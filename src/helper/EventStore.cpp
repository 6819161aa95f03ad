#include "EventStore.h"

#include "Failure.h"
#include "UnitFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantle::power {
namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const std::string& what, const fs::path& path, int error) {
    throw Failure(exitFailed, what + " " + path.string() + ": " + std::strerror(error));
}

void writeAll(int fd, const std::string& text, const fs::path& path) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = ::write(fd, text.data() + done, text.size() - done);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            fail("cannot write", path, errno);
        }
        done += static_cast<std::size_t>(written);
    }
}

void removeIfPresent(const fs::path& path) {
    if (::unlink(path.c_str()) != 0 && errno != ENOENT) {
        fail("cannot remove", path, errno);
    }
}

void createFolder(const fs::path& path) {
    std::error_code error;
    fs::create_directories(path, error);
    if (error) {
        fail("cannot create", path, error.value());
    }
}

} // namespace

EventStore::EventStore(fs::path root)
    : m_root(std::move(root))
    , m_unitDir(m_root / "etc/systemd/system") {}

bool EventStore::runsSystemd() const {
    std::error_code error;
    return fs::is_directory(m_root / "run/systemd/system", error);
}

bool EventStore::hasWakeAlarm() const {
    std::error_code error;
    return fs::exists(m_root / "sys/class/rtc/rtc0/wakealarm", error);
}

std::vector<PowerEvent> EventStore::events() const {
    std::vector<PowerEvent> events;
    std::error_code error;
    for (fs::directory_iterator it(m_unitDir, error), end; !error && it != end;
         it.increment(error)) {
        std::error_code entryError;
        if (!it->is_regular_file(entryError)) {
            continue;
        }
        if (auto event = PowerEvent::fromTimerName(it->path().filename().string())) {
            events.push_back(*event);
        }
    }
    std::sort(events.begin(), events.end());
    return events;
}

bool EventStore::contains(const PowerEvent& event) const {
    std::error_code error;
    return fs::is_regular_file(unitPath(event.unitStem() + ".timer"), error);
}

void EventStore::add(const PowerEvent& event, const Programs& programs) {
    const bool isNew = !contains(event);
    try {
        createFolder(m_unitDir);
        // The service first: an enabled timer must never point at a missing unit.
        writeFile(unitPath(event.unitStem() + ".service"), serviceUnit(event, programs));
        writeFile(unitPath(event.unitStem() + ".timer"), timerUnit(event));
        enable(event.unitStem() + ".timer", "timers.target");
        // Rewritten every time so that it names this program where it is installed now. Kept
        // once written: with no power-on left it only clears the alarm, which is still wanted.
        if (event.kind == EventKind::poweron) {
            writeFile(unitPath(std::string(rtcHookName)), rtcHookUnit(programs));
            enable(std::string(rtcHookName), "multi-user.target");
        }
    } catch (const Failure&) {
        if (isNew) {
            discard(event);
        }
        throw;
    }
}

void EventStore::remove(const PowerEvent& event) {
    disable(event.unitStem() + ".timer", "timers.target");
    removeIfPresent(unitPath(event.unitStem() + ".timer"));
    removeIfPresent(unitPath(event.unitStem() + ".service"));
}

void EventStore::discard(const PowerEvent& event) noexcept {
    try {
        remove(event);
    } catch (const Failure&) {
        // The failure that led here is the one worth reporting.
    }
}

void EventStore::armWakeAlarm(std::optional<std::time_t> epochSeconds) {
    // The kernel refuses a new alarm while one is set, hence the 0 first, in a write of its own.
    const fs::path path = m_root / "sys/class/rtc/rtc0/wakealarm";
    std::vector<std::string> values{"0\n"};
    if (epochSeconds) {
        values.push_back(std::to_string(*epochSeconds) + "\n");
    }
    for (const std::string& value : values) {
        const int fd = ::open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
        if (fd < 0) {
            fail("cannot open", path, errno);
        }
        writeAll(fd, value, path);
        if (::close(fd) != 0) {
            fail("cannot write", path, errno);
        }
    }
}

void EventStore::writeFile(const fs::path& path, const std::string& text) {
    std::string temporary =
        (path.parent_path() / ("." + path.filename().string() + ".XXXXXX")).string();
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) {
        fail("cannot create a file beside", path, errno);
    }
    try {
        writeAll(fd, text, temporary);
        if (::fchmod(fd, 0644) != 0 || ::fsync(fd) != 0) {
            fail("cannot write", temporary, errno);
        }
    } catch (const Failure&) {
        ::close(fd);
        ::unlink(temporary.c_str());
        throw;
    }
    const int closed = ::close(fd);
    if (closed != 0 || ::rename(temporary.c_str(), path.c_str()) != 0) {
        const int error = errno;
        ::unlink(temporary.c_str());
        fail("cannot write", path, error);
    }
}

// A relative link resolves the same under a --root folder as on the running system.
void EventStore::enable(const std::string& unitName, const std::string& target) {
    const fs::path wants = m_unitDir / (target + ".wants");
    createFolder(wants);
    const fs::path link = wants / unitName;
    const fs::path temporary = wants / ("." + unitName + ".link");
    removeIfPresent(temporary);
    if (::symlink(("../" + unitName).c_str(), temporary.c_str()) != 0) {
        fail("cannot create", temporary, errno);
    }
    if (::rename(temporary.c_str(), link.c_str()) != 0) {
        const int error = errno;
        ::unlink(temporary.c_str());
        fail("cannot create", link, error);
    }
}

void EventStore::disable(const std::string& unitName, const std::string& target) {
    removeIfPresent(m_unitDir / (target + ".wants") / unitName);
}

fs::path EventStore::unitPath(const std::string& unitName) const {
    return m_unitDir / unitName;
}

} // namespace vantle::power
