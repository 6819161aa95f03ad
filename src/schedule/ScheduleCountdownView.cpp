#include "schedule/ScheduleCountdownView.h"

#include "monitor/CountdownParts.h"
#include "schedule/ScheduleWarningState.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace vantle {

namespace {

using Action = ShutdownSchedule::Action;

constexpr int kSymbolSize = 32;

// The action's shape, for desktops whose icon theme has none; drawn on a 32-point grid.
QIcon drawnSymbol(Action action) {
    QPixmap pixmap(kSymbolSize * 2, kSymbolSize * 2);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(2, 2);
    p.setPen(QPen(Qt::black, 2.6, Qt::SolidLine, Qt::RoundCap));
    const QRectF ring(5, 5, 22, 22);
    switch (action) {
    case Action::sleep:
        p.setBrush(Qt::black);
        p.drawEllipse(ring);
        p.setCompositionMode(QPainter::CompositionMode_Clear);
        p.drawEllipse(ring.translated(8, -6));
        break;
    case Action::shutdown:
        p.drawArc(ring, 125 * 16, 290 * 16);
        p.drawLine(QPointF(16, 3), QPointF(16, 14));
        break;
    case Action::restart:
        p.drawArc(ring, 90 * 16, 300 * 16);
        p.drawLine(QPointF(16, 5), QPointF(21, 1.5));
        p.drawLine(QPointF(16, 5), QPointF(21, 8.5));
        break;
    case Action::wake:
    case Action::poweron:
        p.drawArc(QRectF(8, 14, 16, 16), 0, 180 * 16);
        p.drawLine(QPointF(3, 22), QPointF(29, 22));
        p.drawLine(QPointF(16, 4), QPointF(16, 9));
        p.drawLine(QPointF(5, 11), QPointF(8, 14));
        p.drawLine(QPointF(27, 11), QPointF(24, 14));
        break;
    }
    p.end();
    return QIcon(pixmap);
}

QString themeSymbol(Action action) {
    switch (action) {
    case Action::sleep:
        return QStringLiteral("weather-clear-night-symbolic");
    case Action::shutdown:
        return QStringLiteral("system-shutdown-symbolic");
    case Action::restart:
        return QStringLiteral("system-reboot-symbolic");
    case Action::wake:
    case Action::poweron:
        break;
    }
    return QStringLiteral("daytime-sunrise-symbolic");
}

QString confirmTitle(Action action) {
    switch (action) {
    case Action::sleep:
        return QStringLiteral("Sleep Now");
    case Action::shutdown:
        return QStringLiteral("Shut Down Now");
    case Action::restart:
        return QStringLiteral("Restart Now");
    case Action::wake:
    case Action::poweron:
        break;
    }
    return QStringLiteral("Continue");
}

} // namespace

ScheduleCountdownView::ScheduleCountdownView(ScheduleWarningState& state,
                                             std::function<void()> onProceed,
                                             std::function<void()> onCancel, QWidget* parent)
    : QWidget(parent)
    , m_state(state)
    , m_onProceed(std::move(onProceed))
    , m_onCancel(std::move(onCancel)) {
    m_symbol = new QLabel(this);
    m_symbol->setObjectName(QStringLiteral("symbol"));
    m_symbol->setAlignment(Qt::AlignCenter);

    QFont headline = font();
    headline.setPointSizeF(headline.pointSizeF() * 1.15);
    headline.setWeight(QFont::DemiBold);
    m_title = centredLabel(headline, this);
    m_title->setObjectName(QStringLiteral("title"));

    QFont digits = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    digits.setPointSizeF(38);
    digits.setWeight(QFont::DemiBold);
    m_countdown = centredLabel(digits, this);
    m_countdown->setObjectName(QStringLiteral("countdown"));

    QFont captionFont = font();
    captionFont.setPointSizeF(captionFont.pointSizeF() * 0.9);
    QLabel* caption = centredLabel(captionFont, this);
    caption->setObjectName(QStringLiteral("caption"));
    caption->setText(QStringLiteral("Cancel skips this one. The schedule itself is unchanged."));
    caption->setWordWrap(true);
    caption->setForegroundRole(QPalette::PlaceholderText);

    auto* cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setShortcut(Qt::Key_Escape);
    m_confirm = new QPushButton(this);
    m_confirm->setDefault(true);
    for (QPushButton* button : {cancel, m_confirm}) {
        button->setMinimumHeight(32);
        // Return belongs to the confirm button whichever button has the focus.
        button->setAutoDefault(false);
    }
    connect(cancel, &QPushButton::clicked, this, [this] { m_onCancel(); });
    connect(m_confirm, &QPushButton::clicked, this, [this] { m_onProceed(); });

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(10);
    buttons->addWidget(cancel, 1);
    buttons->addWidget(m_confirm, 1);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 16, 20, 16);
    layout->setSpacing(10);
    layout->addWidget(m_symbol);
    layout->addWidget(m_title);
    layout->addWidget(m_countdown);
    layout->addWidget(caption);
    layout->addStretch(1);
    layout->addLayout(buttons);

    connect(&m_state, &ScheduleWarningState::actionChanged, this,
            &ScheduleCountdownView::showAction);
    connect(&m_state, &ScheduleWarningState::secondsLeftChanged, this,
            &ScheduleCountdownView::showSecondsLeft);
    showAction();
    showSecondsLeft();
}

void ScheduleCountdownView::showAction() {
    const Action action = m_state.action();
    m_symbol->setPixmap(tintedSymbol(QIcon::fromTheme(themeSymbol(action), drawnSymbol(action)),
                                     kSymbolSize, devicePixelRatioF()));
    m_title->setText(ScheduleWarningState::title(action));
    m_confirm->setText(confirmTitle(action));
    // Setting the text resets the shortcut to its mnemonic.
    m_confirm->setShortcut(Qt::Key_Return);
}

void ScheduleCountdownView::showSecondsLeft() {
    m_countdown->setText(QStringLiteral("in %1s").arg(m_state.secondsLeft()));
}

} // namespace vantle
