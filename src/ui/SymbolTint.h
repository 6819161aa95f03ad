#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>

namespace vantle {

// The colour of everything that warns: the countdown panels' symbols, the notice about
// notifications being off.
inline const QColor kWarningOrange(255, 149, 0);

// `icon` at `size` points in `colour`: only its shape is kept, so a symbolic icon of any theme, or
// one drawn in black, comes out the same.
QPixmap tintedSymbol(const QIcon& icon, int size, qreal devicePixelRatio,
                     const QColor& colour = kWarningOrange);

} // namespace vantle
