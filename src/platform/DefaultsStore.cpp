#include "platform/DefaultsStore.h"

namespace vantle {

bool DefaultsStore::boolValue(const QString& key) const {
    const auto value = object(key);
    return value && value->toBool();
}

double DefaultsStore::doubleValue(const QString& key) const {
    const auto value = object(key);
    return value ? value->toDouble() : 0.0;
}

std::optional<QString> DefaultsStore::stringValue(const QString& key) const {
    const auto value = object(key);
    return value ? value->toString() : std::nullopt;
}

std::optional<QStringList> DefaultsStore::stringArrayValue(const QString& key) const {
    const auto value = object(key);
    if (const QStringList* list = value ? value->get<QStringList>() : nullptr) {
        return *list;
    }
    return std::nullopt;
}

std::optional<QByteArray> DefaultsStore::dataValue(const QString& key) const {
    const auto value = object(key);
    if (const QByteArray* data = value ? value->get<QByteArray>() : nullptr) {
        return *data;
    }
    return std::nullopt;
}

} // namespace vantle
