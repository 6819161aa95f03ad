#include "ui/settings/AppChooserDialog.h"

#include "ui/applist/Glyph.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

namespace vantle {

namespace {

constexpr int kIconSize = 24;

QIcon applicationIcon(const QString& iconName, const QIcon& fallback) {
    if (iconName.isEmpty()) {
        return fallback;
    }
    if (QFileInfo(iconName).isAbsolute()) {
        return QIcon(iconName);
    }
    return QIcon::fromTheme(iconName, fallback);
}

} // namespace

AppChooserDialog::AppChooserDialog(ApplicationCatalog& catalog, const QString& message,
                                   const QString& prompt, QWidget* parent)
    : QDialog(parent)
    , m_apps(catalog.installedApplications())
    , m_search(new QLineEdit(this))
    , m_list(new QListWidget(this))
    , m_choose(nullptr) {
    setObjectName(QStringLiteral("appChooser"));
    setWindowTitle(tr("Choose Apps"));
    resize(420, 480);

    auto* layout = new QVBoxLayout(this);
    auto* label = new QLabel(message, this);
    label->setWordWrap(true);
    layout->addWidget(label);

    m_search->setObjectName(QStringLiteral("search"));
    m_search->setPlaceholderText(tr("Search"));
    m_search->setAccessibleName(tr("Search applications"));
    m_search->setClearButtonEnabled(true);
    layout->addWidget(m_search);

    m_list->setObjectName(QStringLiteral("applications"));
    m_list->setAccessibleName(tr("Installed applications"));
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setIconSize(QSize(kIconSize, kIconSize));
    m_list->setUniformItemSizes(true);
    const QIcon fallback =
        glyph(QStringLiteral("app-fill"), palette().color(QPalette::PlaceholderText), kIconSize);
    for (int i = 0; i < m_apps.size(); ++i) {
        const ApplicationCatalog::Application& app = m_apps.at(i);
        auto* item = new QListWidgetItem(applicationIcon(app.iconName, fallback), app.name, m_list);
        item->setData(Qt::UserRole, i);
        item->setToolTip(app.id);
    }
    layout->addWidget(m_list, 1);

    auto* buttons = new QDialogButtonBox(this);
    auto* other = buttons->addButton(tr("Other File…"), QDialogButtonBox::ActionRole);
    other->setObjectName(QStringLiteral("otherFile"));
    buttons->addButton(QDialogButtonBox::Cancel);
    m_choose = buttons->addButton(prompt, QDialogButtonBox::AcceptRole);
    m_choose->setObjectName(QStringLiteral("choose"));
    m_choose->setEnabled(false);
    layout->addWidget(buttons);

    connect(m_search, &QLineEdit::textChanged, this, &AppChooserDialog::filter);
    connect(m_list, &QListWidget::itemSelectionChanged, this,
            [this] { m_choose->setEnabled(!m_list->selectedItems().isEmpty()); });
    connect(m_list, &QListWidget::itemActivated, this, &AppChooserDialog::accept);
    connect(buttons, &QDialogButtonBox::accepted, this, &AppChooserDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &AppChooserDialog::reject);
    connect(other, &QPushButton::clicked, this, &AppChooserDialog::chooseFiles);
}

void AppChooserDialog::filter(const QString& text) {
    const QString needle = text.trimmed();
    for (int row = 0; row < m_list->count(); ++row) {
        QListWidgetItem* item = m_list->item(row);
        const auto& app = m_apps.at(item->data(Qt::UserRole).toInt());
        const bool shown = needle.isEmpty() || app.name.contains(needle, Qt::CaseInsensitive) ||
                           app.id.contains(needle, Qt::CaseInsensitive);
        item->setHidden(!shown);
        if (!shown) {
            item->setSelected(false);
        }
    }
}

void AppChooserDialog::accept() {
    QList<ApplicationCatalog::Application> picked;
    for (int row = 0; row < m_list->count(); ++row) {
        QListWidgetItem* item = m_list->item(row);
        if (item->isSelected() && !item->isHidden()) {
            picked.append(m_apps.at(item->data(Qt::UserRole).toInt()));
        }
    }
    if (picked.isEmpty()) {
        return;
    }
    QDialog::accept();
    emit chosen(picked, {});
}

void AppChooserDialog::chooseFiles() {
    const QStringList folders =
        QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
    const QStringList files =
        QFileDialog::getOpenFileNames(this, windowTitle(), folders.value(0, QDir::homePath()),
                                      tr("Desktop entries (*.desktop);;All files (*)"));
    if (files.isEmpty()) {
        return;
    }
    QDialog::accept();
    emit chosen({}, files);
}

} // namespace vantle
