#include "ui/SymbolTint.h"

#include <QPainter>

namespace vantle {

QPixmap tintedSymbol(const QIcon& icon, int size, qreal devicePixelRatio, const QColor& colour) {
    QPixmap pixmap = icon.pixmap(QSize(size, size), devicePixelRatio);
    if (pixmap.isNull()) {
        return pixmap;
    }
    QPainter painter(&pixmap);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), colour);
    return pixmap;
}

} // namespace vantle
