#pragma once

#include <stdexcept>
#include <string>

namespace vantle::power {

// Exit statuses the app tells apart; the values follow <sysexits.h>.
inline constexpr int exitFailed = 1;
inline constexpr int exitUsage = 64;
inline constexpr int exitUnavailable = 69;
inline constexpr int exitNotRoot = 77;

// Ends the command: `message` goes to stderr after "vantle-power: ", `exitCode` is the status.
class Failure : public std::runtime_error {
public:
    Failure(int exitCode, const std::string& message)
        : std::runtime_error(message)
        , m_exitCode(exitCode) {}

    int exitCode() const { return m_exitCode; }

private:
    int m_exitCode;
};

} // namespace vantle::power
