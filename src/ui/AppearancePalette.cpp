#include "ui/AppearancePalette.h"

#include "platform/DesktopAppearance.h"

#include <QApplication>

namespace vantle {

AppearancePalette::AppearancePalette(DesktopAppearance& appearance, QObject* parent)
    : QObject(parent)
    , m_desktopPalette(QApplication::palette()) {
    connect(&appearance, &DesktopAppearance::isDarkChanged, this, &AppearancePalette::apply);
    apply(appearance.isDark());
}

bool AppearancePalette::isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}

void AppearancePalette::apply(bool dark) {
    const QPalette wanted = isDark(m_desktopPalette) == dark
                                ? m_desktopPalette
                                : (dark ? darkPalette() : lightPalette());
    if (QApplication::palette() != wanted) {
        QApplication::setPalette(wanted);
    }
}

QPalette AppearancePalette::darkPalette() {
    QPalette p;
    const QColor window(0x2b, 0x2b, 0x2d);
    const QColor base(0x1f, 0x1f, 0x21);
    const QColor text(0xee, 0xee, 0xee);
    const QColor accent(0x3d, 0x8b, 0xf5);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, window);
    p.setColor(QPalette::ToolTipBase, base);
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, QColor(0x8e, 0x8e, 0x93));
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(0x3a, 0x3a, 0x3c));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, Qt::white);
    p.setColor(QPalette::Light, QColor(0x4a, 0x4a, 0x4c));
    p.setColor(QPalette::Midlight, QColor(0x40, 0x40, 0x42));
    p.setColor(QPalette::Mid, QColor(0x30, 0x30, 0x32));
    p.setColor(QPalette::Dark, QColor(0x18, 0x18, 0x1a));
    p.setColor(QPalette::Shadow, Qt::black);
    p.setColor(QPalette::Highlight, accent);
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Link, accent);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        p.setColor(QPalette::Disabled, role, QColor(0x7a, 0x7a, 0x7e));
    }
    return p;
}

QPalette AppearancePalette::lightPalette() {
    QPalette p;
    const QColor accent(0x1f, 0x6f, 0xeb);
    p.setColor(QPalette::Window, QColor(0xf2, 0xf2, 0xf2));
    p.setColor(QPalette::WindowText, QColor(0x1d, 0x1d, 0x1f));
    p.setColor(QPalette::Base, Qt::white);
    p.setColor(QPalette::AlternateBase, QColor(0xf6, 0xf6, 0xf6));
    p.setColor(QPalette::Text, QColor(0x1d, 0x1d, 0x1f));
    p.setColor(QPalette::Button, QColor(0xe8, 0xe8, 0xe8));
    p.setColor(QPalette::ButtonText, QColor(0x1d, 0x1d, 0x1f));
    p.setColor(QPalette::Highlight, accent);
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Link, accent);
    return p;
}

} // namespace vantle
