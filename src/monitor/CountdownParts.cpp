#include "monitor/CountdownParts.h"

#include "platform/PanelPlacement.h"

#include <QGuiApplication>
#include <QLabel>
#include <QPainter>
#include <QScreen>
#include <QStyle>
#include <QWidget>
#include <QWindow>
#include <algorithm>
#include <cmath>

namespace vantle {

QPixmap tintedSymbol(const QIcon& icon, int size, qreal devicePixelRatio) {
    QPixmap pixmap = icon.pixmap(QSize(size, size), devicePixelRatio);
    // Tint whatever shape we got: only its alpha is kept.
    QPainter p(&pixmap);
    p.setCompositionMode(QPainter::CompositionMode_SourceIn);
    p.fillRect(pixmap.rect(), kCountdownOrange);
    return pixmap;
}

QLabel* centredLabel(const QFont& font, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setFont(font);
    label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    // App names come from other programs: never interpret them as markup.
    label->setTextFormat(Qt::PlainText);
    return label;
}

void showFloatingPanel(QWidget& panel, const QString& title, QSize size,
                       PanelPlacement& placement) {
    panel.setWindowFlags(Qt::Tool | Qt::WindowStaysOnTopHint | Qt::CustomizeWindowHint |
                         Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    panel.setWindowTitle(title);
    panel.setAttribute(Qt::WA_ShowWithoutActivating);
    // Its buttons close it from inside their own click handlers, so it must go later, not now.
    panel.setAttribute(Qt::WA_DeleteOnClose);
    // A tray app keeps running when its last window goes.
    panel.setAttribute(Qt::WA_QuitOnClose, false);
    panel.setFixedSize(size);
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        panel.setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size,
                                              screen->availableGeometry()));
    }
    // Asking for the id creates the native window, which has to be prepared before it is shown.
    panel.winId();
    placement.prepare(*panel.windowHandle());
    panel.show();
    panel.raise();
}

} // namespace vantle
