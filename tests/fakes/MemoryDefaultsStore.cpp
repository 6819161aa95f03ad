#include "fakes/MemoryDefaultsStore.h"

namespace vantle {

std::optional<DefaultsValue> MemoryDefaultsStore::object(const QString& key) const {
    const auto it = values.constFind(key);
    return it == values.constEnd() ? std::nullopt : std::optional(*it);
}

void MemoryDefaultsStore::setObject(const QString& key, const DefaultsValue& value) {
    values.insert(key, value);
    ++writeCount;
}

void MemoryDefaultsStore::removeObject(const QString& key) {
    values.remove(key);
    ++writeCount;
}

std::optional<DefaultsDomain> MemoryDefaultsStore::persistentDomain(const QString& name) const {
    const auto it = otherDomains.constFind(name);
    return it == otherDomains.constEnd() ? std::nullopt : std::optional(*it);
}

} // namespace vantle
