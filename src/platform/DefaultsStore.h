#pragma once

#include "platform/DefaultsValue.h"

#include <QMap>
#include <QString>
#include <optional>

namespace vantle {

using DefaultsDomain = QMap<QString, DefaultsValue>;

// The per-user settings database of one defaults domain, plus read access to other named domains.
// Reads come from memory; a write is saved at once, or queued when the store is busy. Failures are
// logged by the implementation and never thrown: a failed save keeps the new value in memory.
class DefaultsStore {
public:
    virtual ~DefaultsStore() = default;

    // The stored value, or nothing when the key is absent.
    virtual std::optional<DefaultsValue> object(const QString& key) const = 0;
    // Stores `value` under `key`, leaving every other key as it is.
    virtual void setObject(const QString& key, const DefaultsValue& value) = 0;
    virtual void removeObject(const QString& key) = 0;

    // The whole of another domain (a legacy one, say), or nothing when it does not exist or
    // cannot be read. Never modifies it.
    virtual std::optional<DefaultsDomain> persistentDomain(const QString& name) const = 0;

    // Writes every change that could not be saved yet (the store was busy), waiting for it if it
    // must; called once on the way out. Whatever still cannot be written is logged.
    virtual void flush() = 0;

    // Typed reads with the usual defaults conversions.
    bool boolValue(const QString& key) const;
    double doubleValue(const QString& key) const;
    std::optional<QString> stringValue(const QString& key) const;
    std::optional<QStringList> stringArrayValue(const QString& key) const;
    std::optional<QByteArray> dataValue(const QString& key) const;
};

} // namespace vantle
