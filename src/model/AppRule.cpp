#include "model/AppRule.h"

#include "model/JsonFields.h"

#include <cmath>

namespace vantle {

std::optional<QByteArray> encodeAppRules(const QList<AppRule>& rules) {
    QList<QByteArray> elements;
    elements.reserve(rules.size());
    for (const AppRule& rule : rules) {
        // JSON has no infinity or NaN; writing null would make the whole list unreadable.
        if (!std::isfinite(rule.timeoutMinutes)) {
            return std::nullopt;
        }
        elements.append(json::orderedObject({
            {"bundleID", rule.bundleID},
            {"name", rule.name},
            {"action", rawValue(rule.action)},
            {"timeoutMinutes", rule.timeoutMinutes},
        }));
    }
    return json::array(elements);
}

std::optional<QList<AppRule>> decodeAppRules(const QByteArray& document) {
    return json::decodeArray<AppRule>(
        document, [](const QJsonObject& object) -> std::optional<AppRule> {
            const auto bundleID = json::stringField(object, "bundleID");
            const auto name = json::stringField(object, "name");
            const auto actionText = json::stringField(object, "action");
            const auto action =
                actionText ? fromRawValue<AppRule::Action>(*actionText) : std::nullopt;
            const auto timeout = json::numberField(object, "timeoutMinutes");
            if (!bundleID || !name || !action || !timeout) {
                return std::nullopt;
            }
            return AppRule{*bundleID, *name, *action, *timeout};
        });
}

} // namespace vantle
