#include "ui/countdown/CountdownPanel.h"

#include "system/CountdownState.h"
#include "ui/countdown/CountdownSymbols.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>

namespace vantle {

namespace {

constexpr int kSymbolSize = 32;
constexpr int kNamesWidth = 260;

QLabel* centredLabel(const QFont& font, QWidget* parent, const QString& objectName) {
    auto* label = new QLabel(parent);
    label->setObjectName(objectName);
    label->setFont(font);
    label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    // Names come from other programs: never interpret them as markup.
    label->setTextFormat(Qt::PlainText);
    return label;
}

QFont scaled(QFont font, qreal factor) {
    font.setPointSizeF(font.pointSizeF() * factor);
    return font;
}

} // namespace

CountdownPanel::CountdownPanel(CountdownState& state, std::function<void(bool confirmed)> onAnswer,
                               QWidget* parent)
    : QWidget(parent)
    , m_state(state)
    , m_onAnswer(std::move(onAnswer)) {
    m_symbol = new QLabel(this);
    m_symbol->setObjectName(QStringLiteral("symbol"));
    m_symbol->setAlignment(Qt::AlignCenter);

    QFont headline = scaled(font(), 1.15);
    headline.setWeight(QFont::DemiBold);
    m_title = centredLabel(headline, this, QStringLiteral("title"));

    QFont digits = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    digits.setPointSizeF(38);
    digits.setWeight(QFont::DemiBold);
    m_countdown = centredLabel(digits, this, QStringLiteral("countdown"));

    const QFont caption = scaled(font(), 0.9);
    m_caption = centredLabel(caption, this, QStringLiteral("caption"));
    m_caption->setWordWrap(true);
    m_caption->setForegroundRole(QPalette::PlaceholderText);

    m_names = centredLabel(caption, this, QStringLiteral("names"));
    // A short list sits in the middle of the room left above the buttons.
    m_names->setAlignment(Qt::AlignCenter);
    m_names->setForegroundRole(QPalette::PlaceholderText);
    // A long list scrolls instead of pushing the buttons out of the fixed-size panel.
    m_namesArea = new QScrollArea(this);
    m_namesArea->setFrameShape(QFrame::NoFrame);
    m_namesArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_namesArea->setWidgetResizable(true);
    m_namesArea->setWidget(m_names);
    m_namesArea->setFixedWidth(kNamesWidth);
    m_namesArea->viewport()->setAutoFillBackground(false);

    auto* cancel = new QPushButton(tr("Cancel"), this);
    cancel->setShortcut(Qt::Key_Escape);
    m_confirm = new QPushButton(this);
    m_confirm->setDefault(true);
    for (QPushButton* button : {cancel, m_confirm}) {
        button->setMinimumHeight(32);
        // Return belongs to the confirm button whichever button has the focus.
        button->setAutoDefault(false);
    }
    connect(cancel, &QPushButton::clicked, this, [this] { m_onAnswer(false); });
    connect(m_confirm, &QPushButton::clicked, this, [this] { m_onAnswer(true); });

    m_heading = new QVBoxLayout;
    m_heading->addWidget(m_title);
    m_heading->addWidget(m_countdown);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(10);
    buttons->addWidget(cancel, 1);
    buttons->addWidget(m_confirm, 1);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 16, 20, 16);
    layout->setSpacing(10);
    layout->addWidget(m_symbol);
    layout->addLayout(m_heading);
    layout->addWidget(m_caption);
    layout->addWidget(m_namesArea, 1, Qt::AlignHCenter);
    // Keeps the buttons at the bottom while there are no names; the names take the room first.
    layout->addStretch(0);
    layout->addLayout(buttons);

    connect(&m_state, &CountdownState::contentChanged, this, &CountdownPanel::showContent);
    connect(&m_state, &CountdownState::secondsLeftChanged, this, &CountdownPanel::showSecondsLeft);
    showContent();
    showSecondsLeft();
}

void CountdownPanel::showContent() {
    const CountdownContent content = m_state.content();
    setWindowTitle(content.windowTitle);
    m_symbol->setPixmap(countdownSymbol(content.symbol, kSymbolSize, devicePixelRatioF()));
    m_heading->setSpacing(content.headingSpacing);
    m_title->setText(content.title);
    m_caption->setText(content.caption);
    m_caption->setVisible(!content.caption.isEmpty());
    // One line per name: a long one is shortened, since a wrapped one reads as two.
    const QFontMetrics metrics(m_names->font());
    const int room = kNamesWidth - style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    QStringList names;
    for (const QString& name : content.names) {
        names << metrics.elidedText(name, Qt::ElideRight, room);
    }
    m_names->setText(names.join(QLatin1Char('\n')));
    // Even empty, the scroll area asks for room the caption needs.
    m_namesArea->setVisible(!names.isEmpty());
    m_confirm->setText(content.confirmLabel);
    // Setting the text resets the shortcut to its mnemonic.
    m_confirm->setShortcut(Qt::Key_Return);
}

void CountdownPanel::showSecondsLeft() {
    m_countdown->setText(tr("in %1s").arg(m_state.secondsLeft()));
}

} // namespace vantle
