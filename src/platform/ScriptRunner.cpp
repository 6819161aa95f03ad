#include "platform/ScriptRunner.h"

namespace vantle {

QString ScriptOutcome::description() const {
    return QStringLiteral("%1 (%2)")
        .arg(errorMessage.value_or(QStringLiteral("no message")))
        .arg(errorNumber);
}

ScriptOutcome ScriptOutcome::success(QString output) {
    ScriptOutcome outcome;
    outcome.output = std::move(output);
    return outcome;
}

ScriptOutcome ScriptOutcome::failure(int number, std::optional<QString> message) {
    ScriptOutcome outcome;
    outcome.status = Status::failed;
    outcome.errorNumber = number;
    outcome.errorMessage = std::move(message);
    return outcome;
}

ScriptOutcome ScriptOutcome::userCancelled() {
    ScriptOutcome outcome;
    outcome.status = Status::cancelled;
    return outcome;
}

} // namespace vantle
