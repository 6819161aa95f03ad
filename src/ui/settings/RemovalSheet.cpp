#include "ui/settings/RemovalSheet.h"

#include "model/ProductTexts.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace vantle {

namespace {
QLabel* paragraph(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    return label;
}
} // namespace

RemovalSheet::RemovalSheet(Uninstaller& uninstaller, Uninstaller::Plan plan,
                           const ProductTexts& texts, QWidget* parent)
    : QDialog(parent)
    , m_uninstaller(uninstaller)
    , m_plan(std::move(plan)) {
    setWindowTitle(tr("Remove Vantle"));
    setWindowModality(Qt::WindowModal);
    setMinimumWidth(440);
    setMaximumWidth(520);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 16);
    layout->setSpacing(10);

    auto* title = new QLabel(tr("Remove Vantle?"), this);
    QFont big = title->font();
    big.setPointSizeF(big.pointSizeF() * 1.3);
    big.setBold(true);
    title->setFont(big);
    layout->addWidget(title);
    layout->addWidget(new QLabel(tr("This will:"), this));
    QStringList bullets;
    for (const QString& line : m_plan.stepLines(texts)) {
        bullets << QStringLiteral("<li>%1</li>").arg(line.toHtmlEscaped());
    }
    auto* steps = new QLabel(
        QStringLiteral("<ul style=\"margin-left:-20px\">%1</ul>").arg(bullets.join(QString())),
        this);
    steps->setObjectName(QStringLiteral("steps"));
    steps->setWordWrap(true);
    steps->setTextFormat(Qt::RichText);
    layout->addWidget(steps);
    if (m_plan.needsAdministrator()) {
        auto* password = paragraph(ProductTexts::translated(texts.removalPasswordLine), this);
        password->setObjectName(QStringLiteral("passwordLine"));
        layout->addWidget(password);
    }
    layout->addWidget(paragraph(m_plan.programNote(), this));
    auto* keeps = paragraph(ProductTexts::translated(texts.removalSystemKeeps), this);
    keeps->setForegroundRole(QPalette::PlaceholderText);
    layout->addWidget(keeps);

    m_error = paragraph(QString(), this);
    m_error->setObjectName(QStringLiteral("error"));
    QPalette warning = m_error->palette();
    warning.setColor(QPalette::WindowText, QColor(0xd7, 0x3a, 0x2f));
    m_error->setPalette(warning);
    m_error->hide();
    layout->addWidget(m_error);

    auto* buttons = new QDialogButtonBox(this);
    m_cancel = buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    m_remove = buttons->addButton(tr("Remove Vantle"), QDialogButtonBox::DestructiveRole);
    m_remove->setObjectName(QStringLiteral("removeButton"));
    // Destructive: red text, and never the button Return presses.
    QPalette destructive = m_remove->palette();
    destructive.setColor(QPalette::ButtonText, QColor(0xd7, 0x3a, 0x2f));
    m_remove->setPalette(destructive);
    m_remove->setAutoDefault(false);
    m_cancel->setDefault(true);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_remove, &QPushButton::clicked, this, &RemovalSheet::startRemoval);
    layout->addWidget(buttons);
}

QString RemovalSheet::errorText() const {
    return m_error->isHidden() ? QString() : m_error->text();
}

void RemovalSheet::startRemoval() {
    m_remove->setText(tr("Removing…"));
    m_remove->setEnabled(false);
    m_cancel->setEnabled(false);
    m_error->hide();
    // The run blocks while the password dialog is open; let "Removing…" show first.
    QMetaObject::invokeMethod(this, &RemovalSheet::runRemoval, Qt::QueuedConnection);
}

void RemovalSheet::runRemoval() {
    if (const std::optional<Uninstaller::UninstallError> error = m_uninstaller.run(m_plan)) {
        m_error->setText(error->description());
        m_error->show();
        m_remove->setText(tr("Remove Vantle"));
        m_remove->setEnabled(true);
        m_cancel->setEnabled(true);
        return;
    }
    accept();
}

} // namespace vantle
