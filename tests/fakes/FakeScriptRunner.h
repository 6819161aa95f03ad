#pragma once

#include "platform/ScriptRunner.h"

#include <QSet>
#include <QStringList>
#include <functional>

namespace vantle {

// Records every script and answers with the outcomes the test set.
struct FakeScriptRunner final : ScriptRunner {
    QStringList plainRuns;
    QStringList administratorRuns;
    QSet<QString> existingFiles;
    // Answers for plain runs, by the start of the script; success with no output otherwise.
    std::function<ScriptOutcome(const QString&)> plainOutcome;
    ScriptOutcome administratorOutcome = ScriptOutcome::success();
    // Files that exist once an administrator run has succeeded (a rule it installs, say).
    QSet<QString> filesCreatedByAdministrator;
    // When set, administrator runs are also written here, in order with other fakes' changes.
    QStringList* journal = nullptr;

    ScriptOutcome run(const QString& script) override {
        plainRuns.append(script);
        return plainOutcome ? plainOutcome(script) : ScriptOutcome::success();
    }
    ScriptOutcome runAsAdministrator(const QString& script) override {
        administratorRuns.append(script);
        if (journal) {
            journal->append(QStringLiteral("admin ") + script);
        }
        if (administratorOutcome.succeeded()) {
            existingFiles.unite(filesCreatedByAdministrator);
        }
        return administratorOutcome;
    }
    bool fileExists(const QString& path) const override { return existingFiles.contains(path); }
};

} // namespace vantle
