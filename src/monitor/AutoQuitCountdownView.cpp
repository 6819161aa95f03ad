#include "monitor/AutoQuitCountdownView.h"

#include "monitor/CountdownParts.h"
#include "monitor/QuitWarningState.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>

namespace vantle {

namespace {

constexpr int kSymbolSize = 32;
constexpr int kListWidth = 260;

// A stopwatch, for desktops whose icon theme has no timer.
QIcon drawnTimer() {
    QPixmap pixmap(kSymbolSize * 2, kSymbolSize * 2);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(2, 2);
    QPen pen(Qt::black, 2.6, Qt::SolidLine, Qt::RoundCap);
    p.setPen(pen);
    const QPointF centre(16, 18);
    p.drawEllipse(centre, 11.5, 11.5);
    p.drawLine(QPointF(13, 3), QPointF(19, 3));
    p.drawLine(QPointF(16, 3), QPointF(16, 6.5));
    p.drawLine(QPointF(25.5, 7.5), QPointF(27.5, 9.5));
    p.drawLine(centre, QPointF(21, 13));
    p.end();
    return QIcon(pixmap);
}

QPixmap timerSymbol(qreal devicePixelRatio) {
    QIcon icon = QIcon::fromTheme(QStringLiteral("timer-symbolic"));
    if (icon.isNull()) {
        icon = QIcon::fromTheme(QStringLiteral("alarm-symbolic"), drawnTimer());
    }
    return tintedSymbol(icon, kSymbolSize, devicePixelRatio);
}

} // namespace

AutoQuitCountdownView::AutoQuitCountdownView(QuitWarningState& state,
                                             std::function<void()> onQuitNow,
                                             std::function<void()> onCancel, QWidget* parent)
    : QWidget(parent)
    , m_state(state)
    , m_onQuitNow(std::move(onQuitNow))
    , m_onCancel(std::move(onCancel)) {
    auto* symbol = new QLabel(this);
    symbol->setPixmap(timerSymbol(devicePixelRatioF()));
    symbol->setAlignment(Qt::AlignCenter);

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

    QFont caption = font();
    caption.setPointSizeF(caption.pointSizeF() * 0.9);
    m_names = centredLabel(caption, this);
    m_names->setObjectName(QStringLiteral("apps"));
    // A short list sits in the middle of the room left above the buttons.
    m_names->setAlignment(Qt::AlignCenter);
    m_names->setForegroundRole(QPalette::PlaceholderText);
    // A long batch scrolls instead of pushing the buttons out of the fixed-size panel.
    auto* namesArea = new QScrollArea(this);
    namesArea->setFrameShape(QFrame::NoFrame);
    namesArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    namesArea->setWidgetResizable(true);
    namesArea->setWidget(m_names);
    namesArea->setFixedWidth(kListWidth);
    namesArea->viewport()->setAutoFillBackground(false);

    auto* cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setShortcut(Qt::Key_Escape);
    auto* quitNow = new QPushButton(QStringLiteral("Quit Now"), this);
    quitNow->setShortcut(Qt::Key_Return);
    quitNow->setDefault(true);
    for (QPushButton* button : {cancel, quitNow}) {
        button->setMinimumHeight(32);
        // Return belongs to Quit Now whichever button has the focus.
        button->setAutoDefault(false);
    }
    connect(cancel, &QPushButton::clicked, this, [this] { m_onCancel(); });
    connect(quitNow, &QPushButton::clicked, this, [this] { m_onQuitNow(); });

    auto* heading = new QVBoxLayout;
    heading->setSpacing(2);
    heading->addWidget(m_title);
    heading->addWidget(m_countdown);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(10);
    buttons->addWidget(cancel, 1);
    buttons->addWidget(quitNow, 1);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 16, 20, 16);
    layout->setSpacing(8);
    layout->addWidget(symbol);
    layout->addLayout(heading);
    layout->addWidget(namesArea, 1, Qt::AlignHCenter);
    layout->addLayout(buttons);

    connect(&m_state, &QuitWarningState::appsChanged, this, &AutoQuitCountdownView::showApps);
    connect(&m_state, &QuitWarningState::secondsLeftChanged, this,
            &AutoQuitCountdownView::showSecondsLeft);
    showApps();
    showSecondsLeft();
}

void AutoQuitCountdownView::showApps() {
    const QList<AppInfo>& apps = m_state.apps();
    m_title->setText(apps.size() == 1 ? QStringLiteral("Quitting Idle App")
                                      : QStringLiteral("Quitting Idle Apps"));
    // One line per app: a long name is shortened, since a wrapped one reads as two apps.
    const QFontMetrics metrics(m_names->font());
    const int room = kListWidth - style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    QStringList names;
    for (const AppInfo& app : apps) {
        names << metrics.elidedText(app.name, Qt::ElideRight, room);
    }
    m_names->setText(names.join(QLatin1Char('\n')));
}

void AutoQuitCountdownView::showSecondsLeft() {
    m_countdown->setText(QStringLiteral("in %1s").arg(m_state.secondsLeft()));
}

} // namespace vantle
