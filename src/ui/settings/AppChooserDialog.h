#pragma once

#include "platform/ApplicationCatalog.h"

#include <QDialog>

class QLineEdit;
class QListWidget;
class QPushButton;

namespace vantle {

// Picks installed applications: their icons and names, searchable, several at once. "Other
// File…" takes desktop-entry files from anywhere instead. Either way `chosen` reports the pick
// and the dialog closes.
class AppChooserDialog final : public QDialog {
    Q_OBJECT
public:
    AppChooserDialog(ApplicationCatalog& catalog, const QString& message, const QString& prompt,
                     QWidget* parent = nullptr);

signals:
    void chosen(const QList<vantle::ApplicationCatalog::Application>& apps,
                const QStringList& files);

private:
    void filter(const QString& text);
    void accept() override;
    void chooseFiles();

    QList<ApplicationCatalog::Application> m_apps;
    QLineEdit* m_search;
    QListWidget* m_list;
    QPushButton* m_choose;
};

} // namespace vantle
