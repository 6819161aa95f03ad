#pragma once

#include <QObject>

namespace vantle {

// The desktop's light or dark appearance, as the user chose it.
class DesktopAppearance : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    ~DesktopAppearance() override = default;

    // True when the desktop asks for a dark appearance. Where it states no preference, the
    // implementation answers from the palette the desktop gave the application.
    virtual bool isDark() const = 0;

signals:
    void isDarkChanged(bool dark);
};

} // namespace vantle
