#include "Process.h"

#include "Failure.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <initializer_list>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle::power {
namespace {

// Systemd splits and expands unit-file command lines, so only paths made of these characters
// are written into one; anything else is refused rather than quoted.
bool isPlainPath(std::string_view path) {
    if (!path.starts_with('/')) {
        return false;
    }
    for (char c : path) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') || std::strchr("/._+-", c) != nullptr;
        if (!plain) {
            return false;
        }
    }
    return true;
}

std::string findProgram(std::string_view name, std::initializer_list<const char*> candidates) {
    for (const char* candidate : candidates) {
        if (::access(candidate, X_OK) == 0) {
            return candidate;
        }
    }
    throw Failure(exitUnavailable, "unavailable: " + std::string(name) + " not found");
}

std::string ownPath() {
    char buffer[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", buffer, sizeof buffer);
    if (length <= 0 || static_cast<std::size_t>(length) >= sizeof buffer) {
        throw Failure(exitFailed, "cannot find this program's own path");
    }
    std::string path(buffer, static_cast<std::size_t>(length));
    if (!isPlainPath(path)) {
        throw Failure(exitFailed, "refusing to name this program in a unit file, its path has "
                                  "unusual characters: " +
                                      path);
    }
    return path;
}

} // namespace

Programs findPrograms() {
    return Programs{findProgram("true", {"/usr/bin/true", "/bin/true"}),
                    findProgram("systemctl", {"/usr/bin/systemctl", "/bin/systemctl"}), ownPath()};
}

void runProgram(const std::string& path, const std::vector<std::string>& args) {
    // Everything the child needs is built before fork(), so the child only calls async-safe code.
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(path.c_str()));
    for (const std::string& arg : args) {
        argv.push_back(const_cast<char*>(arg.c_str()));
    }
    argv.push_back(nullptr);
    char pathVariable[] = "PATH=/usr/sbin:/usr/bin:/sbin:/bin";
    char* environment[] = {pathVariable, nullptr};

    std::string commandLine = path;
    for (const std::string& arg : args) {
        commandLine += ' ' + arg;
    }

    const pid_t pid = ::fork();
    if (pid < 0) {
        throw Failure(exitFailed, "cannot start " + commandLine + ": " + std::strerror(errno));
    }
    if (pid == 0) {
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        ::execve(path.c_str(), argv.data(), environment);
        ::_exit(127);
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) {
            throw Failure(exitFailed, "lost track of " + commandLine + ": " + std::strerror(errno));
        }
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw Failure(exitFailed, commandLine + " failed");
    }
}

} // namespace vantle::power
