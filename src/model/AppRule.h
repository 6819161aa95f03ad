#pragma once

#include "model/RawEnum.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>

namespace vantle {

// Hides or quits one application after it has been inactive for `timeoutMinutes`.
struct AppRule {
    enum class Action { hide, quit };

    QString bundleID;
    QString name;
    Action action = Action::quit;
    double timeoutMinutes = 0;

    // Rules are keyed on the application they apply to.
    const QString& id() const { return bundleID; }

    bool operator==(const AppRule&) const = default;
};

template <>
struct RawValues<AppRule::Action> {
    static constexpr std::array<std::pair<AppRule::Action, const char*>, 2> table{{
        {AppRule::Action::hide, "hide"},
        {AppRule::Action::quit, "quit"},
    }};
};

// The stored form: a JSON array of objects, keys in a fixed order.
// Nothing when a rule cannot be represented (a timeout that is not a finite number).
std::optional<QByteArray> encodeAppRules(const QList<AppRule>& rules);
// Strict: one bad element fails the whole list.
std::optional<QList<AppRule>> decodeAppRules(const QByteArray& json);

} // namespace vantle
