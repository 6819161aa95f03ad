#pragma once

#include <QDateTime>
#include <QHashFunctions>
#include <QIcon>
#include <QString>
#include <optional>

namespace vantle {

// A snapshot of one running application. Identity is the process: two snapshots of the same pid
// are equal whatever else differs.
struct AppInfo {
    qint32 id = 0;
    QString name;
    std::optional<QString> bundleIdentifier;
    bool isBackground = false;
    QDateTime lastActiveDate;
    QIcon icon;

    bool operator==(const AppInfo& other) const { return id == other.id; }
};

inline size_t qHash(const AppInfo& app, size_t seed = 0) noexcept {
    return QT_PREPEND_NAMESPACE(qHash)(app.id, seed);
}

} // namespace vantle

template <>
struct std::hash<vantle::AppInfo> {
    size_t operator()(const vantle::AppInfo& app) const noexcept {
        return std::hash<qint32>{}(app.id);
    }
};
