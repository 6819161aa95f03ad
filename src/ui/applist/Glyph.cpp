#include "ui/applist/Glyph.h"

#include "ui/SymbolTint.h"

#include <QPixmap>

namespace vantle {

QIcon glyph(const QString& name, const QColor& color, int size) {
    const QIcon source(QStringLiteral(":/glyphs/%1.svg").arg(name));
    QIcon tinted;
    for (const qreal ratio : {1.0, 2.0}) {
        const QPixmap pixmap = tintedSymbol(source, size, ratio, color);
        if (!pixmap.isNull()) {
            tinted.addPixmap(pixmap);
        }
    }
    return tinted;
}

} // namespace vantle
