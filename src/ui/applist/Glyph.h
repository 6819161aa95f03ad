#pragma once

#include <QColor>
#include <QIcon>
#include <QString>

namespace vantle {

// One of the app's own monochrome symbols (":/glyphs/<name>.svg"), in `color`, so it reads on a
// dark palette as well as on a light one.
QIcon glyph(const QString& name, const QColor& color, int size = 16);

} // namespace vantle
