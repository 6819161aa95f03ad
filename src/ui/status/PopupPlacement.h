#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace vantle {

// Where the app-list popup goes: centred under the tray icon (over it, when the icon sits in the
// lower half of the screen, as on a bottom panel), or at the pointer when the tray does not say
// where its icon is; always inside the screen's available area.
QPoint popupPosition(const QRect& icon, const QPoint& pointer, const QSize& size,
                     const QRect& available);

} // namespace vantle
