#include "ui/countdown/CountdownSymbols.h"

#include "ui/SymbolTint.h"

#include <QIcon>
#include <QPainter>

namespace vantle {

namespace {

// The shapes are drawn on a 32-point grid at twice the resolution, in black: tinting keeps only
// their alpha.
constexpr int kGrid = 32;

QIcon drawnSymbol(CountdownSymbol symbol) {
    QPixmap pixmap(kGrid * 2, kGrid * 2);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(2, 2);
    p.setPen(QPen(Qt::black, 2.6, Qt::SolidLine, Qt::RoundCap));
    const QRectF ring(5, 5, 22, 22);
    switch (symbol) {
    case CountdownSymbol::timer: {
        const QPointF centre(16, 18);
        p.drawEllipse(centre, 11.5, 11.5);
        p.drawLine(QPointF(13, 3), QPointF(19, 3));
        p.drawLine(QPointF(16, 3), QPointF(16, 6.5));
        p.drawLine(QPointF(25.5, 7.5), QPointF(27.5, 9.5));
        p.drawLine(centre, QPointF(21, 13));
        break;
    }
    case CountdownSymbol::sleep:
        p.setBrush(Qt::black);
        p.drawEllipse(ring);
        p.setCompositionMode(QPainter::CompositionMode_Clear);
        p.drawEllipse(ring.translated(8, -6));
        break;
    case CountdownSymbol::power:
        p.drawArc(ring, 125 * 16, 290 * 16);
        p.drawLine(QPointF(16, 3), QPointF(16, 14));
        break;
    case CountdownSymbol::restart:
        p.drawArc(ring, 90 * 16, 300 * 16);
        p.drawLine(QPointF(16, 5), QPointF(21, 1.5));
        p.drawLine(QPointF(16, 5), QPointF(21, 8.5));
        break;
    case CountdownSymbol::sunrise:
        p.drawArc(QRectF(8, 14, 16, 16), 0, 180 * 16);
        p.drawLine(QPointF(3, 22), QPointF(29, 22));
        p.drawLine(QPointF(16, 4), QPointF(16, 9));
        p.drawLine(QPointF(5, 11), QPointF(8, 14));
        p.drawLine(QPointF(27, 11), QPointF(24, 14));
        break;
    }
    p.end();
    return QIcon(pixmap);
}

// Names from the freedesktop icon naming, most fitting first.
QStringList themeNames(CountdownSymbol symbol) {
    switch (symbol) {
    case CountdownSymbol::timer:
        return {QStringLiteral("timer-symbolic"), QStringLiteral("alarm-symbolic")};
    case CountdownSymbol::sleep:
        return {QStringLiteral("weather-clear-night-symbolic")};
    case CountdownSymbol::power:
        return {QStringLiteral("system-shutdown-symbolic")};
    case CountdownSymbol::restart:
        return {QStringLiteral("system-reboot-symbolic")};
    case CountdownSymbol::sunrise:
        break;
    }
    return {QStringLiteral("daytime-sunrise-symbolic")};
}

} // namespace

QPixmap countdownSymbol(CountdownSymbol symbol, int size, qreal devicePixelRatio) {
    for (const QString& name : themeNames(symbol)) {
        const QIcon themed = QIcon::fromTheme(name);
        if (!themed.isNull()) {
            return tintedSymbol(themed, size, devicePixelRatio);
        }
    }
    return tintedSymbol(drawnSymbol(symbol), size, devicePixelRatio);
}

} // namespace vantle
