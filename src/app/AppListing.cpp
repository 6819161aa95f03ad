#include "app/AppListing.h"

#include <QStringList>

namespace vantle {

QString appListing(const QList<AppInfo>& apps, const QHash<qint32, QDateTime>& lastActiveDates) {
    QList<QStringList> rows{{QStringLiteral("PID"), QStringLiteral("NAME"),
                             QStringLiteral("BUNDLE ID"), QStringLiteral("KIND"),
                             QStringLiteral("LAST ACTIVE")}};
    for (const AppInfo& app : apps) {
        const QDateTime lastActive = lastActiveDates.value(app.id, app.lastActiveDate);
        rows.append({QString::number(app.id), app.name,
                     app.bundleIdentifier.value_or(QStringLiteral("—")),
                     app.isBackground ? QStringLiteral("background") : QStringLiteral("regular"),
                     lastActive.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))});
    }
    QList<qsizetype> widths(rows.first().size(), 0);
    for (const QStringList& row : std::as_const(rows)) {
        for (qsizetype i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    QStringList lines;
    for (const QStringList& row : std::as_const(rows)) {
        QString line;
        for (qsizetype i = 0; i < row.size(); ++i) {
            const bool last = i + 1 == row.size();
            line += last ? row[i] : row[i].leftJustified(widths[i] + 2);
        }
        lines.append(line);
    }
    if (apps.isEmpty()) {
        lines.append(QStringLiteral("(no other applications are running)"));
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace vantle
