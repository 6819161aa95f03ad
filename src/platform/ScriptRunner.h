#pragma once

#include <QString>
#include <optional>

namespace vantle {

// How one shell script run ended.
struct ScriptOutcome {
    enum class Status {
        succeeded,
        // The user dismissed the system's password prompt.
        cancelled,
        failed,
        // The platform could not even prepare the run; callers treat it as done.
        notCreated,
    };

    Status status = Status::succeeded;
    int errorNumber = 0;
    std::optional<QString> errorMessage;
    // What the script printed, on success.
    QString output;

    bool succeeded() const { return status == Status::succeeded; }
    // "<message> (<number>)", for log lines.
    QString description() const;

    static ScriptOutcome success(QString output = {});
    static ScriptOutcome failure(int number, std::optional<QString> message);
    static ScriptOutcome userCancelled();
};

// Runs shell scripts, plainly or as the administrator, and answers file tests. Each run blocks
// until the script ends.
class ScriptRunner {
public:
    virtual ~ScriptRunner() = default;

    // Runs `script` with the user's own rights. Safe to call from a background thread.
    virtual ScriptOutcome run(const QString& script) = 0;
    // Runs `script` as root after the system's own password prompt. Main thread only; it blocks
    // while the prompt is open. A platform without the facility reports a failure.
    virtual ScriptOutcome runAsAdministrator(const QString& script) = 0;
    // Whether a file exists at `path`; checked afresh on every call. Safe from any thread.
    virtual bool fileExists(const QString& path) const = 0;
};

} // namespace vantle
