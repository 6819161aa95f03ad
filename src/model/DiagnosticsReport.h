#pragma once

#include <QDateTime>
#include <QString>

namespace vantle {

class AppSettings;
class BundleInfo;
struct ProductTexts;

// The support report: installation facts and every setting, one fixed layout, joined by line
// feeds with none after the last line. The date is formatted in the default QLocale.
QString buildDiagnosticsReport(const AppSettings& settings, const QString& notificationStatus,
                               const BundleInfo& bundle, const ProductTexts& texts,
                               const QDateTime& now);

// The abbreviated date with a short time, e.g. "Nov 16, 2026 at 1:30 AM" in English.
QString mediumDateTime(const QDateTime& when, const QLocale& locale);

} // namespace vantle
