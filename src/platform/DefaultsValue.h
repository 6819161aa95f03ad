#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>
#include <QStringList>
#include <optional>
#include <variant>

namespace vantle {

// One stored settings value, typed so that a bool reads back as a bool, data as data. `Other`
// carries anything else a store may hold (a value written by hand, a mixed array) unchanged, so
// such values survive being copied or rewritten around.
class DefaultsValue {
public:
    struct Other {
        QJsonValue json;
        bool operator==(const Other&) const = default;
    };
    using Storage = std::variant<bool, double, QString, QByteArray, QStringList, Other>;

    // An absent-looking placeholder, so domains can live in Qt containers.
    DefaultsValue()
        : m_value(Other{}) {}
    DefaultsValue(bool value)
        : m_value(value) {}
    DefaultsValue(double value)
        : m_value(value) {}
    DefaultsValue(int value)
        : m_value(double(value)) {}
    DefaultsValue(QString value)
        : m_value(std::move(value)) {}
    DefaultsValue(const char* value)
        : m_value(QString::fromUtf8(value)) {}
    DefaultsValue(QByteArray value)
        : m_value(std::move(value)) {}
    DefaultsValue(QStringList value)
        : m_value(std::move(value)) {}
    DefaultsValue(Other value)
        : m_value(std::move(value)) {}

    const Storage& storage() const { return m_value; }

    template <typename T>
    const T* get() const {
        return std::get_if<T>(&m_value);
    }

    // The conversions of the platform's typed reads, shared by every store.
    // Bool: a bool, a non-zero number, or a string such as "YES", "true" or "1".
    bool toBool() const;
    // Double: a number, a bool as 0/1 or a numeric string; 0 otherwise.
    double toDouble() const;
    // String: a string, or a number's text; absent otherwise.
    std::optional<QString> toString() const;
    // A value taken as a bool only when it is one (or the number 0 or 1).
    std::optional<bool> asStrictBool() const;

    bool operator==(const DefaultsValue&) const = default;

private:
    Storage m_value;
};

} // namespace vantle
