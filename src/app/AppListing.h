#pragma once

#include "model/AppInfo.h"

#include <QHash>
#include <QList>

namespace vantle {

// The running applications as a plain table for support: pid, name, bundle identifier ("—" when
// none), regular or background, and when each was last active.
QString appListing(const QList<AppInfo>& apps, const QHash<qint32, QDateTime>& lastActiveDates);

} // namespace vantle
