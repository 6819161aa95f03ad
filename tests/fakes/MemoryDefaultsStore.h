#pragma once

#include "platform/DefaultsStore.h"

namespace vantle {

// Defaults held in memory, with other domains that tests fill in. Counts writes so tests can tell
// one write per change from none.
class MemoryDefaultsStore final : public DefaultsStore {
public:
    std::optional<DefaultsValue> object(const QString& key) const override;
    void setObject(const QString& key, const DefaultsValue& value) override;
    void removeObject(const QString& key) override;
    std::optional<DefaultsDomain> persistentDomain(const QString& name) const override;
    void flush() override { ++flushCount; }

    DefaultsDomain values;
    QMap<QString, DefaultsDomain> otherDomains;
    int writeCount = 0;
    int flushCount = 0;
};

} // namespace vantle
