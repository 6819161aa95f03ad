#include "ui/applist/Glyph.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPixmap>

namespace vantle {

QIcon glyph(const QString& name, const QColor& color, int size) {
    const QIcon source(QStringLiteral(":/glyphs/%1.svg").arg(name));
    QIcon tinted;
    for (const qreal ratio : {1.0, 2.0}) {
        QPixmap pixmap = source.pixmap(QSize(size, size), ratio);
        if (pixmap.isNull()) {
            continue;
        }
        QPainter painter(&pixmap);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(pixmap.rect(), color);
        painter.end();
        tinted.addPixmap(pixmap);
    }
    return tinted;
}

} // namespace vantle
