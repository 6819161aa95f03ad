#include "platform/linux/QtAlerts.h"

#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>
#include <QWidget>

namespace vantle {

void QtAlerts::activateApp() {
    // A desktop gives focus to the window that asks for it; the alert itself does that.
}

AlertResponse QtAlerts::runModal(const AlertRequest& request) {
    QMessageBox box;
    box.setWindowTitle(QStringLiteral("Vantle"));
    box.setIcon(QMessageBox::Information);
    box.setText(request.messageText);
    box.setInformativeText(request.informativeText);
    box.setWindowFlag(Qt::WindowStaysOnTopHint);
    QList<QAbstractButton*> buttons;
    for (qsizetype i = 0; i < request.buttons.size(); ++i) {
        // The first button is the default; the last one is what Escape and closing pick.
        const bool last = i == request.buttons.size() - 1 && i > 0;
        QPushButton* button = box.addButton(request.buttons[i], last ? QMessageBox::RejectRole
                                                                     : QMessageBox::AcceptRole);
        buttons.append(button);
        if (i == 0) {
            box.setDefaultButton(button);
        }
        if (last) {
            box.setEscapeButton(button);
        }
    }
    QCheckBox* checkBox = nullptr;
    if (request.checkBoxTitle) {
        checkBox = new QCheckBox(*request.checkBoxTitle, &box);
        checkBox->setToolTip(request.checkBoxToolTip);
        box.setCheckBox(checkBox);
    }
    box.exec();
    const qsizetype clicked = buttons.indexOf(box.clickedButton());
    return {.button = static_cast<int>(clicked >= 0 ? clicked : buttons.size() - 1),
            .checkBoxChecked = checkBox && checkBox->isChecked()};
}

void QtAlerts::bringWindowsForward(const QString& title) {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->windowTitle() == title) {
            window->raise();
            window->activateWindow();
        }
    }
}

} // namespace vantle
