#pragma once

#include "system/Uninstaller.h"

#include <QDialog>

class QLabel;
class QPushButton;

namespace vantle {

struct ProductTexts;

// Shows what removing Vantle will do and, once the user agrees, does it. A failed removal shows
// its error here and leaves the sheet open; a successful one ends the app.
class RemovalSheet final : public QDialog {
    Q_OBJECT
public:
    RemovalSheet(Uninstaller& uninstaller, Uninstaller::Plan plan, const ProductTexts& texts,
                 QWidget* parent = nullptr);

    QPushButton* removeButton() const { return m_remove; }
    QPushButton* cancelButton() const { return m_cancel; }
    // Empty until a removal failed.
    QString errorText() const;

private:
    void startRemoval();
    void runRemoval();

    Uninstaller& m_uninstaller;
    Uninstaller::Plan m_plan;
    QLabel* m_error = nullptr;
    QPushButton* m_cancel = nullptr;
    QPushButton* m_remove = nullptr;
};

} // namespace vantle
