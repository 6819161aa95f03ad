#include "model/JsonFields.h"

#include <QJsonDocument>
#include <cmath>

namespace vantle::json {

namespace {
// Qt's own serialisation of one value: write it as a one-element array and drop the brackets.
QByteArray scalar(const QJsonValue& value) {
    const QByteArray wrapped = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return wrapped.mid(1, wrapped.size() - 2);
}
} // namespace

QByteArray orderedObject(std::initializer_list<std::pair<const char*, QJsonValue>> fields) {
    QByteArray out = "{";
    bool first = true;
    for (const auto& [key, value] : fields) {
        if (!first) {
            out += ',';
        }
        first = false;
        out += scalar(QString::fromUtf8(key));
        out += ':';
        out += scalar(value);
    }
    out += '}';
    return out;
}

QByteArray array(const QList<QByteArray>& elements) {
    return '[' + elements.join(',') + ']';
}

std::optional<QJsonArray> parseArray(const QByteArray& document) {
    QJsonParseError error{};
    const QJsonDocument parsed = QJsonDocument::fromJson(document, &error);
    if (error.error != QJsonParseError::NoError || !parsed.isArray()) {
        return std::nullopt;
    }
    return parsed.array();
}

std::optional<QString> stringField(const QJsonObject& object, const char* key) {
    const QJsonValue value = object.value(QLatin1String(key));
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<bool> boolField(const QJsonObject& object, const char* key) {
    const QJsonValue value = object.value(QLatin1String(key));
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

std::optional<double> numberField(const QJsonObject& object, const char* key) {
    const QJsonValue value = object.value(QLatin1String(key));
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

std::optional<qint64> integerValue(const QJsonValue& value) {
    if (!value.isDouble()) {
        return std::nullopt;
    }
    const double number = value.toDouble();
    // 2^63 is exactly representable; anything at or beyond it would overflow.
    constexpr double limit = 9223372036854775808.0;
    if (!std::isfinite(number) || std::trunc(number) != number || number >= limit ||
        number < -limit) {
        return std::nullopt;
    }
    return static_cast<qint64>(number);
}

std::optional<qint64> integerField(const QJsonObject& object, const char* key) {
    return integerValue(object.value(QLatin1String(key)));
}

} // namespace vantle::json
