#pragma once

#include <QString>
#include <QStringView>
#include <array>
#include <optional>
#include <utility>

namespace vantle {

// Each string-valued enumeration specialises RawValues<E> with `table`: every case paired with its
// raw value, in declaration order. The helpers below give the raw value, the case from a raw
// value (exact, case-sensitive match) and the list of all cases.
template <typename E>
struct RawValues;

template <typename E>
QString rawValue(E value) {
    for (const auto& [candidate, raw] : RawValues<E>::table) {
        if (candidate == value) {
            return QString::fromUtf8(raw);
        }
    }
    return {};
}

template <typename E>
std::optional<E> fromRawValue(QStringView raw) {
    for (const auto& [candidate, text] : RawValues<E>::table) {
        if (raw == QString::fromUtf8(text)) {
            return candidate;
        }
    }
    return std::nullopt;
}

template <typename E>
constexpr auto allCases() {
    std::array<E, RawValues<E>::table.size()> cases{};
    for (std::size_t i = 0; i < cases.size(); ++i) {
        cases[i] = RawValues<E>::table[i].first;
    }
    return cases;
}

} // namespace vantle
