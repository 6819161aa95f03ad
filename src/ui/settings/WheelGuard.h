#pragma once

#include <QObject>

namespace vantle {

// Keeps a wheel turned over a page from changing a setting on the way past: over a combo box,
// slider or spin box that does not have the keyboard focus the wheel scrolls the page instead.
// guard(page) watches every widget of a page, and the ones added to it later.
class WheelGuard final : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    // Watches `page` and everything under it; the controls a wheel would change get a focus
    // policy that a wheel does not take.
    void guard(QWidget* page);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace vantle
