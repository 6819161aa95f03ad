#pragma once

#include "platform/Clock.h"
#include "ui/settings/RemovalSheet.h"

#include <QPointer>
#include <QWidget>

class QLabel;
class QPushButton;

namespace vantle {

struct SettingsContext;

// The diagnostics report for support, the notification status it carries, and the complete
// removal of Vantle.
class AdvancedTab final : public QWidget {
    Q_OBJECT
public:
    explicit AdvancedTab(const SettingsContext& context, QWidget* parent = nullptr);

    // As the report words it; "checking" until the first answer.
    QString notificationStatus() const { return m_status; }
    QPushButton* copyButton() const { return m_copy; }
    QPushButton* removeButton() const { return m_remove; }
    // The open removal sheet, if any.
    RemovalSheet* removalSheet() const { return m_sheet; }

    // How long the copy button says it copied.
    static constexpr Milliseconds kCopiedFor{2000};
    // A status query that has not answered by then counts as failed.
    static constexpr Milliseconds kStatusQueryLimit{5000};

protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void readNotificationStatus();
    void setStatus(const QString& status);
    void copyDiagnostics();
    void setCopied(bool copied);
    void showRemovalSheet();
    void refreshSymbols();

    const SettingsContext& m_context;
    QString m_status = QStringLiteral("checking");
    bool m_didCopy = false;
    bool m_waitingForStatus = false;
    QLabel* m_statusLabel = nullptr;
    QPushButton* m_copy = nullptr;
    QPushButton* m_remove = nullptr;
    QPointer<RemovalSheet> m_sheet;
    Timer m_copyReset;
    Timer m_statusLimit;
};

} // namespace vantle
