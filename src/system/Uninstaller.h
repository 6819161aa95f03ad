#pragma once

#include "platform/AppInstallation.h"
#include "platform/PowerSchedulerTool.h"

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace vantle {

class AppSettings;
class DefaultsStore;
class FileOps;
class LoginItem;
class ScriptRunner;
struct ProductTexts;

// Removes everything Vantle set up, in a fixed order: the power events and the Always Allow rule
// (as the administrator, all or nothing), the login item, its settings, caches and state, and
// then the program itself by whatever means installed it. Main thread only.
class Uninstaller {
public:
    // The settings domains, the current one first and then those of earlier generations.
    static const QStringList kSettingsDomains;

    struct Plan {
        // Registered event keys, "<word>|<date>", to cancel.
        QStringList pmsetEvents;
        bool hasSudoersRule = false;
        bool isLoginItem = false;
        AppInstallation installation;

        bool needsAdministrator() const { return !pmsetEvents.isEmpty() || hasSudoersRule; }
        // What the removal will do, one sentence per step, in order.
        QStringList stepLines(const ProductTexts& texts) const;
        // What becomes of the program, for the sentence after the steps.
        QString programNote() const;
    };

    // Why a removal stopped. Its one case: the administrator step failed (or its prompt was
    // dismissed), and nothing was removed.
    struct UninstallError {
        enum class Kind { privilegedStepFailed };
        Kind kind = Kind::privilegedStepFailed;
        // What the script run reported, for the log.
        QString detail;

        // What the user is told; the same for every failure of that step.
        QString description() const;
        static UninstallError privilegedStepFailed(QString detail);
    };

    struct Parts {
        const AppSettings& settings;
        DefaultsStore& defaults;
        ScriptRunner& scripts;
        LoginItem& loginItem;
        FileOps& files;
        PowerSchedulerTool tool;
        AppInstallation installation;
    };

    explicit Uninstaller(Parts parts);

    Plan plan() const;
    // Runs the removal. On failure of the administrator step returns the error and has changed
    // nothing; otherwise every later step is tried (failures are logged) and `onRemoved` runs.
    std::optional<UninstallError> run(const Plan& plan);

    // Closes the windows and ends the app; the composition root sets it.
    std::function<void()> onRemoved;

    // The administrator script for a plan: the cancels, then the rule files. Empty when the plan
    // needs no administrator. Keys that are not well-formed event keys are left out.
    static QString administratorScript(const Plan& plan, const PowerSchedulerTool& tool);

private:
    void removeLoginItem();
    void removeData();
    void removeProgram(const AppInstallation& installation);
    void removeByManifest(const QString& manifest);

    Parts m_parts;
};

} // namespace vantle
