#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <functional>
#include <initializer_list>
#include <optional>
#include <utility>

namespace vantle::json {

// Writes one object with its keys in the given order (QJsonObject would sort them). Values are
// serialised by Qt, so escaping and number formatting (30, not 30.0) are Qt's.
QByteArray orderedObject(std::initializer_list<std::pair<const char*, QJsonValue>> fields);

// Joins already-encoded elements into a JSON array.
QByteArray array(const QList<QByteArray>& elements);

// Parses `document` as a JSON array and decodes each element with `decode`; nothing when the
// document is not an array or any element fails.
template <typename T>
std::optional<QList<T>>
decodeArray(const QByteArray& document,
            const std::function<std::optional<T>(const QJsonObject&)>& decode);

std::optional<QJsonArray> parseArray(const QByteArray& document);

// Strict field reads: nothing when the key is missing or of another JSON type.
std::optional<QString> stringField(const QJsonObject& object, const char* key);
std::optional<bool> boolField(const QJsonObject& object, const char* key);
std::optional<double> numberField(const QJsonObject& object, const char* key);
// A number that is a whole value within the 64-bit range.
std::optional<qint64> integerField(const QJsonObject& object, const char* key);
std::optional<qint64> integerValue(const QJsonValue& value);

template <typename T>
std::optional<QList<T>>
decodeArray(const QByteArray& document,
            const std::function<std::optional<T>(const QJsonObject&)>& decode) {
    const std::optional<QJsonArray> elements = parseArray(document);
    if (!elements) {
        return std::nullopt;
    }
    QList<T> result;
    result.reserve(elements->size());
    for (const QJsonValue& element : *elements) {
        if (!element.isObject()) {
            return std::nullopt;
        }
        std::optional<T> decoded = decode(element.toObject());
        if (!decoded) {
            return std::nullopt;
        }
        result.append(std::move(*decoded));
    }
    return result;
}

} // namespace vantle::json
