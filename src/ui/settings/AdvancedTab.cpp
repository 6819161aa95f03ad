#include "ui/settings/AdvancedTab.h"

#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "platform/Platform.h"
#include "system/NotificationAuthority.h"
#include "system/Uninstaller.h"
#include "ui/applist/Glyph.h"
#include "ui/settings/RemovalSheet.h"
#include "ui/settings/SettingsContext.h"

#include <QClipboard>
#include <QEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

namespace vantle {

namespace {

QLabel* heading(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    return label;
}

QLabel* paragraph(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    return label;
}

} // namespace

AdvancedTab::AdvancedTab(const SettingsContext& context, QWidget* parent)
    : QWidget(parent)
    , m_context(context) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->setSpacing(8);

    layout->addWidget(heading(tr("Diagnostics"), this));
    layout->addWidget(
        paragraph(tr("Paste this into a bug report — it lists what Vantle is actually "
                     "configured to do: your version, notification permission, rules, "
                     "exclusions and schedules."),
                  this));
    m_copy = new QPushButton(this);
    m_copy->setObjectName(QStringLiteral("copyDiagnostics"));
    connect(m_copy, &QPushButton::clicked, this, &AdvancedTab::copyDiagnostics);
    layout->addWidget(m_copy, 0, Qt::AlignLeft);
    m_statusLabel = new QLabel(this);
    m_statusLabel->setObjectName(QStringLiteral("notificationStatus"));
    m_statusLabel->setForegroundRole(QPalette::PlaceholderText);
    layout->addWidget(m_statusLabel);

    layout->addSpacing(16);
    layout->addWidget(heading(tr("Remove Vantle"), this));
    layout->addWidget(
        paragraph(ProductTexts::translated(m_context.platform.texts->removalExplanation), this));
    m_remove = new QPushButton(tr("Remove Vantle"), this);
    m_remove->setObjectName(QStringLiteral("removeVantle"));
    connect(m_remove, &QPushButton::clicked, this, &AdvancedTab::showRemovalSheet);
    layout->addWidget(m_remove, 0, Qt::AlignLeft);
    layout->addStretch(1);

    // Wide enough for either text, so the button does not jump when it says it copied.
    setCopied(true);
    const int copiedWidth = m_copy->sizeHint().width();
    setCopied(false);
    m_copy->setMinimumWidth(std::max(copiedWidth, m_copy->sizeHint().width()));
    setStatus(m_status);
}

void AdvancedTab::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    readNotificationStatus();
}

void AdvancedTab::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        refreshSymbols();
    }
}

void AdvancedTab::readNotificationStatus() {
    NotificationCenter* center = m_context.platform.notifications.get();
    if (!center) {
        setStatus(NotificationAuthority::statusText(AuthorizationStatus::ephemeral));
        return;
    }
    if (m_waitingForStatus) {
        return;
    }
    m_waitingForStatus = true;
    QPointer<AdvancedTab> self(this);
    m_statusLimit = m_context.platform.clock->singleShot(kStatusQueryLimit, [this] {
        m_waitingForStatus = false;
        setStatus(QStringLiteral("unknown"));
    });
    center->readAuthorizationStatus([self](AuthorizationStatus status) {
        if (self) {
            self->m_waitingForStatus = false;
            self->m_statusLimit.reset();
            self->setStatus(NotificationAuthority::statusText(status));
        }
    });
}

void AdvancedTab::setStatus(const QString& status) {
    m_status = status;
    m_statusLabel->setText(tr("Notifications: %1").arg(status));
}

void AdvancedTab::copyDiagnostics() {
    QGuiApplication::clipboard()->setText(m_context.settings.diagnosticsReport(m_status));
    setCopied(true);
    m_copyReset = m_context.platform.clock->singleShot(kCopiedFor, [this] { setCopied(false); });
}

void AdvancedTab::setCopied(bool copied) {
    m_didCopy = copied;
    m_copy->setText(copied ? tr("Copied to Clipboard") : tr("Copy Diagnostics"));
    refreshSymbols();
}

void AdvancedTab::refreshSymbols() {
    if (!m_copy || !m_remove) {
        return;
    }
    const QColor ink = palette().color(QPalette::ButtonText);
    m_copy->setIcon(
        glyph(m_didCopy ? QStringLiteral("checkmark") : QStringLiteral("clipboard"), ink));
    m_remove->setIcon(glyph(QStringLiteral("trash"), ink));
}

void AdvancedTab::showRemovalSheet() {
    if (m_sheet) {
        m_sheet->raise();
        return;
    }
    m_sheet = new RemovalSheet(m_context.uninstaller, m_context.uninstaller.plan(),
                               *m_context.platform.texts, this);
    m_sheet->setAttribute(Qt::WA_DeleteOnClose);
    m_sheet->open();
}

} // namespace vantle
