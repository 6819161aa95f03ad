#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantle::power {

// Absolute paths this tool writes into unit files or executes.
struct Programs {
    std::string truePath;
    std::string systemctlPath;
    std::string selfPath;
};

// The programs on this machine, or a Failure naming the one that is missing.
Programs findPrograms();

// Runs `path` with `args` (no shell, a fixed minimal environment, its stdout sent to our stderr
// so that ours stays parseable) and waits; a Failure when it cannot run or exits non-zero.
void runProgram(const std::string& path, const std::vector<std::string>& args);

} // namespace vantle::power
