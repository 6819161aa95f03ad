#include "ui/settings/NotificationDeniedNotice.h"

#include "system/NotificationAuthority.h"
#include "ui/SymbolTint.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace vantle {

namespace {
// A symbolic theme icon has its mark cut out, so it can be tinted; a full-colour one would turn
// into a plain blob, so the style's own warning icon (already a warning colour) is used as is.
QPixmap warningSign(const QStyle* style, int side, qreal ratio) {
    const QIcon symbolic = QIcon::fromTheme(QStringLiteral("dialog-warning-symbolic"));
    if (symbolic.isNull()) {
        return style->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(QSize(side, side), ratio);
    }
    return tintedSymbol(symbolic, side, ratio);
}
} // namespace

NotificationDeniedNotice::NotificationDeniedNotice(NotificationAuthority& authority,
                                                   QWidget* parent)
    : QWidget(parent)
    , m_authority(authority) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Maximum);

    QFont caption = font();
    caption.setPointSizeF(caption.pointSizeF() * 0.85);
    auto* icon = new QLabel(this);
    icon->setPixmap(warningSign(style(), QFontMetrics(caption).height(), devicePixelRatioF()));

    auto* message = new QLabel(
        tr("Notifications are turned off for Vantle, so the window is being used instead."), this);
    message->setWordWrap(true);

    auto* open = new QPushButton(tr("Open Notification Settings\u2026"), this);
    open->setFlat(true);
    open->setCursor(Qt::PointingHandCursor);
    open->setStyleSheet(QStringLiteral(
        "QPushButton { border: none; padding: 0; color: palette(link); text-align: left; }"));
    connect(open, &QPushButton::clicked, &m_authority,
            &NotificationAuthority::openNotificationSettings);

    auto* column = new QVBoxLayout;
    column->setSpacing(4);
    column->addWidget(message);
    column->addWidget(open, 0, Qt::AlignLeft);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 8, 8, 8);
    row->setSpacing(6);
    row->addWidget(icon, 0, Qt::AlignTop);
    row->addLayout(column, 1);

    connect(&m_authority, &NotificationAuthority::statusChanged, this,
            &NotificationDeniedNotice::updateVisibility);
    updateVisibility();
}

void NotificationDeniedNotice::setStyle(QuitWarningStyle style) {
    m_style = style;
    updateVisibility();
}

void NotificationDeniedNotice::updateVisibility() {
    // Not determined is left alone: the status may still turn out fine.
    setVisible(m_style == QuitWarningStyle::notification &&
               m_authority.status() == AuthorizationStatus::denied);
}

void NotificationDeniedNotice::paintEvent(QPaintEvent* event) {
    Q_UNUSED(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QColor fill = kWarningOrange;
    fill.setAlphaF(0.12f);
    painter.setBrush(fill);
    painter.drawRoundedRect(QRectF(rect()), 8, 8);
}

} // namespace vantle
