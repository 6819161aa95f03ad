#pragma once

#include "system/CountdownContent.h"

#include <QPixmap>

namespace vantle {

// `symbol` at `size` points in the warning colour: the icon theme's own where it has one, else
// drawn here, so every desktop shows a symbol.
QPixmap countdownSymbol(CountdownSymbol symbol, int size, qreal devicePixelRatio);

} // namespace vantle
