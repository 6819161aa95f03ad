#include "ui/settings/SettingsWindow.h"

#include "ui/applist/Glyph.h"
#include "ui/settings/SettingsSelection.h"
#include "ui/settings/SettingsTabs.h"
#include "ui/settings/WheelGuard.h"

#include <QButtonGroup>
#include <QFrame>
#include <QHBoxLayout>
#include <QScrollArea>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace vantle {

namespace {

// Room for the widest page; the window does not resize with its tab, so nothing jumps.
constexpr QSize kWindowSize{620, 540};
constexpr int kTabIconSize = 24;

QIcon tabIcon(SettingsTab tab, const QColor& color) {
    return QIcon::fromTheme(settingsTabIconName(tab),
                            glyph(settingsTabGlyph(tab), color, kTabIconSize));
}

} // namespace

QString SettingsWindow::title() {
    return tr("Vantle Settings");
}

SettingsWindow::SettingsWindow(const SettingsContext& context, SettingsSelection& selection,
                               QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowCloseButtonHint)
    , m_context(context)
    , m_selection(selection)
    , m_buttons(new QButtonGroup(this))
    , m_stack(new QStackedWidget(this))
    , m_wheelGuard(new WheelGuard(this))
    , m_current(selection.tab()) {
    setObjectName(QStringLiteral("settingsWindow"));
    setWindowTitle(title());
    setAttribute(Qt::WA_DeleteOnClose);
    setFixedSize(kWindowSize);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto* bar = new QWidget(this);
    bar->setObjectName(QStringLiteral("tabBar"));
    auto* barLayout = new QHBoxLayout(bar);
    barLayout->setContentsMargins(8, 6, 8, 6);
    barLayout->setSpacing(2);
    barLayout->addStretch();
    const QColor iconColor = palette().color(QPalette::WindowText);
    for (const SettingsTab tab : allCases<SettingsTab>()) {
        auto* button = new QToolButton(bar);
        button->setObjectName(QStringLiteral("tab-%1").arg(rawValue(tab)));
        button->setText(settingsTabTitle(tab));
        button->setAccessibleName(settingsTabTitle(tab));
        button->setIcon(tabIcon(tab, iconColor));
        button->setIconSize(QSize(kTabIconSize, kTabIconSize));
        button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        button->setAutoRaise(true);
        button->setCheckable(true);
        button->setMinimumWidth(72);
        m_buttons->addButton(button, static_cast<int>(tab));
        barLayout->addWidget(button);
    }
    barLayout->addStretch();
    layout->addWidget(bar);
    auto* rule = new QFrame(this);
    rule->setFrameShape(QFrame::HLine);
    rule->setFrameShadow(QFrame::Sunken);
    layout->addWidget(rule);
    layout->addWidget(m_stack, 1);

    connect(m_buttons, &QButtonGroup::idClicked, this,
            [this](int id) { m_selection.setTab(static_cast<SettingsTab>(id)); });
    connect(&m_selection, &SettingsSelection::tabChanged, this, &SettingsWindow::showTab);
    showTab(m_selection.tab());
}

void SettingsWindow::showTab(SettingsTab tab) {
    m_current = tab;
    m_buttons->button(static_cast<int>(tab))->setChecked(true);
    QWidget* page = m_pages.value(tab);
    if (!page) {
        auto* scroll = new QScrollArea(m_stack);
        scroll->setObjectName(QStringLiteral("page-%1").arg(rawValue(tab)));
        scroll->setFrameShape(QFrame::NoFrame);
        scroll->setWidgetResizable(true);
        scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        QWidget* content = makeTab(tab, m_context, scroll);
        scroll->setWidget(content);
        m_wheelGuard->guard(content);
        m_stack->addWidget(scroll);
        m_pages.insert(tab, content);
        page = content;
        // The tab buttons come first, then the page, top to bottom.
        setTabOrder(m_buttons->buttons().last(), scroll);
    }
    m_stack->setCurrentWidget(page->parentWidget()->parentWidget());
}

} // namespace vantle
