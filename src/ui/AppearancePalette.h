#pragma once

#include <QObject>
#include <QPalette>

namespace vantle {

class DesktopAppearance;

// Keeps every window of the app (the list, the countdown panels) in the desktop's light or dark
// appearance. Desktops that say "dark" through the portal but give Qt a light palette (or the
// other way round) get a palette of the right kind; otherwise the desktop's own palette stands.
class AppearancePalette final : public QObject {
    Q_OBJECT
public:
    explicit AppearancePalette(DesktopAppearance& appearance, QObject* parent = nullptr);

    static QPalette darkPalette();
    static QPalette lightPalette();
    static bool isDark(const QPalette& palette);

private:
    void apply(bool dark);

    QPalette m_desktopPalette;
};

} // namespace vantle
