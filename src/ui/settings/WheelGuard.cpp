#include "ui/settings/WheelGuard.h"

#include <QAbstractScrollArea>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QChildEvent>
#include <QComboBox>
#include <QCoreApplication>
#include <QEvent>
#include <QScrollBar>
#include <QWheelEvent>
#include <QWidget>

namespace vantle {

namespace {

bool turnsWithWheel(const QObject* object) {
    // Scroll bars are sliders too, and they are there to be scrolled.
    return qobject_cast<const QComboBox*>(object) ||
           (qobject_cast<const QAbstractSlider*>(object) &&
            !qobject_cast<const QScrollBar*>(object)) ||
           qobject_cast<const QAbstractSpinBox*>(object);
}

} // namespace

void WheelGuard::guard(QWidget* page) {
    QList<QWidget*> widgets = page->findChildren<QWidget*>();
    widgets.prepend(page);
    for (QWidget* widget : std::as_const(widgets)) {
        // Every widget is watched, so rows added later (a new rule, a new schedule) are guarded
        // as they arrive.
        widget->removeEventFilter(this);
        widget->installEventFilter(this);
        if (turnsWithWheel(widget) && widget->focusPolicy() == Qt::WheelFocus) {
            widget->setFocusPolicy(Qt::StrongFocus);
        }
    }
}

bool WheelGuard::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ChildAdded) {
        if (auto* child = qobject_cast<QWidget*>(static_cast<QChildEvent*>(event)->child())) {
            guard(child);
        }
    } else if (event->type() == QEvent::Wheel && turnsWithWheel(watched)) {
        auto* control = static_cast<QWidget*>(watched);
        if (!control->hasFocus()) {
            // Handed straight to the page's scroll bar: left to travel up the parents, the event
            // would reach the page only when it came from the window system.
            auto* wheel = static_cast<QWheelEvent*>(event);
            const bool sideways = qAbs(wheel->angleDelta().x()) > qAbs(wheel->angleDelta().y());
            for (QWidget* parent = control->parentWidget(); parent;
                 parent = parent->parentWidget()) {
                if (auto* area = qobject_cast<QAbstractScrollArea*>(parent)) {
                    QCoreApplication::sendEvent(
                        sideways ? area->horizontalScrollBar() : area->verticalScrollBar(), wheel);
                    break;
                }
            }
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

} // namespace vantle
