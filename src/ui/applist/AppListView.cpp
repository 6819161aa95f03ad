#include "ui/applist/AppListView.h"

#include "model/KeyCombo.h"
#include "ui/applist/AppListModel.h"
#include "ui/applist/AppListState.h"
#include "ui/applist/AppRowDelegate.h"
#include "ui/applist/Glyph.h"

#include <QAction>
#include <QCheckBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace vantle {

namespace {

constexpr int kWidth = 340;
constexpr int kMinRows = 4;
constexpr int kMaxRows = 12;
const QColor kForceRed(0xd9, 0x3a, 0x3f);

enum Page { ListPage, EmptyPage, ConfirmPage };

// The key sequence of a list command. Qt's Ctrl is the Command key on macOS.
QList<QKeySequence> sequences(AppCommand command) {
    const KeyCombo& combo = commandBinding(command).combo;
    Qt::KeyboardModifiers modifiers;
    if (combo.has(KeyCombo::command)) {
        modifiers |= Qt::ControlModifier;
    }
    if (combo.has(KeyCombo::shift)) {
        modifiers |= Qt::ShiftModifier;
    }
    if (combo.character == QChar(KeyCombo::kReturn)) {
        // Both Return and the keypad's Enter.
        return {QKeySequence(QKeyCombination(modifiers, Qt::Key_Return)),
                QKeySequence(QKeyCombination(modifiers, Qt::Key_Enter))};
    }
    const auto key = static_cast<Qt::Key>(combo.character.toUpper().unicode());
    return {QKeySequence(QKeyCombination(modifiers, key))};
}

void addShortcut(QWidget* owner, AppCommand command, std::function<void()> action) {
    for (const QKeySequence& sequence : sequences(command)) {
        auto* shortcut = new QShortcut(sequence, owner);
        shortcut->setContext(Qt::WindowShortcut);
        QObject::connect(shortcut, &QShortcut::activated, owner, action);
    }
}

QLabel* label(const QString& objectName, QWidget* parent) {
    auto* result = new QLabel(parent);
    result->setObjectName(objectName);
    result->setTextFormat(Qt::PlainText);
    return result;
}

} // namespace

AppListView::AppListView(AppListState& state, std::function<void()> onOpenSettings, QWidget* parent)
    : QWidget(parent)
    , m_state(state)
    , m_model(new AppListModel(state, this)) {
    setObjectName(QStringLiteral("appList"));
    setFixedWidth(kWidth);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 10, 10, 10);
    layout->setSpacing(8);

    // Header: search, select all, settings.
    auto* header = new QHBoxLayout;
    m_search = new QLineEdit(this);
    m_search->setObjectName(QStringLiteral("search"));
    m_search->setPlaceholderText(m_state.searchPlaceholder());
    m_search->setClearButtonEnabled(true);
    m_search->installEventFilter(this);
    m_search->addAction(new QAction(m_search), QLineEdit::LeadingPosition);
    header->addWidget(m_search, 1);
    m_selectAll = new QCheckBox(this);
    m_selectAll->setObjectName(QStringLiteral("selectAll"));
    header->addWidget(m_selectAll);
    if (onOpenSettings) {
        m_settings = new QToolButton(this);
        m_settings->setObjectName(QStringLiteral("settings"));
        m_settings->setAutoRaise(true);
        m_settings->setToolTip(tr("Settings"));
        connect(m_settings, &QToolButton::clicked, this, std::move(onOpenSettings));
        header->addWidget(m_settings);
    }
    layout->addLayout(header);

    m_pages = new QStackedWidget(this);
    m_list = new QListView(m_pages);
    m_list->setObjectName(QStringLiteral("apps"));
    m_list->setModel(m_model);
    m_list->setItemDelegate(new AppRowDelegate(m_state, m_list));
    m_list->setMouseTracking(true);
    m_list->setUniformItemSizes(true);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setSelectionMode(QAbstractItemView::NoSelection);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->viewport()->setAutoFillBackground(false);
    m_list->installEventFilter(this);
    m_pages->addWidget(m_list);

    auto* empty = new QWidget(m_pages);
    empty->setObjectName(QStringLiteral("empty"));
    auto* emptyLayout = new QVBoxLayout(empty);
    emptyLayout->addStretch();
    m_emptyIcon = label(QStringLiteral("emptyIcon"), empty);
    m_emptyIcon->setAlignment(Qt::AlignCenter);
    emptyLayout->addWidget(m_emptyIcon);
    m_emptyText = label(QStringLiteral("emptyText"), empty);
    m_emptyText->setAlignment(Qt::AlignCenter);
    emptyLayout->addWidget(m_emptyText);
    emptyLayout->addStretch();
    m_pages->addWidget(empty);

    auto* confirm = new QWidget(m_pages);
    confirm->setObjectName(QStringLiteral("forceQuitConfirmation"));
    auto* confirmLayout = new QVBoxLayout(confirm);
    confirmLayout->addStretch();
    m_confirmTitle = label(QStringLiteral("confirmTitle"), confirm);
    QFont bold = m_confirmTitle->font();
    bold.setBold(true);
    m_confirmTitle->setFont(bold);
    m_confirmTitle->setWordWrap(true);
    confirmLayout->addWidget(m_confirmTitle);
    QLabel* message = label(QStringLiteral("confirmMessage"), confirm);
    message->setText(AppListState::confirmationMessage());
    message->setWordWrap(true);
    confirmLayout->addWidget(message);
    auto* confirmButtons = new QHBoxLayout;
    confirmButtons->addStretch();
    auto* cancel = new QPushButton(tr("Cancel"), confirm);
    cancel->setObjectName(QStringLiteral("confirmCancel"));
    connect(cancel, &QPushButton::clicked, &m_state, &AppListState::cancelForceQuit);
    confirmButtons->addWidget(cancel);
    m_confirmButton = new QPushButton(tr("Force Quit"), confirm);
    m_confirmButton->setObjectName(QStringLiteral("confirmForceQuit"));
    connect(m_confirmButton, &QPushButton::clicked, &m_state, &AppListState::confirmForceQuit);
    confirmButtons->addWidget(m_confirmButton);
    confirmLayout->addLayout(confirmButtons);
    confirmLayout->addStretch();
    m_pages->addWidget(confirm);
    layout->addWidget(m_pages);

    // Bottom bar: force-quit mode, the count, the main button.
    auto* bottom = new QHBoxLayout;
    m_forceMode = new QCheckBox(tr("Force Quit"), this);
    m_forceMode->setObjectName(QStringLiteral("forceMode"));
    bottom->addWidget(m_forceMode);
    bottom->addStretch();
    m_count = label(QStringLiteral("count"), this);
    bottom->addWidget(m_count);
    m_quit = new QPushButton(this);
    m_quit->setObjectName(QStringLiteral("quitSelected"));
    m_quit->setAutoDefault(false);
    QFont semibold = m_quit->font();
    semibold.setWeight(QFont::DemiBold);
    m_quit->setFont(semibold);
    bottom->addWidget(m_quit);
    layout->addLayout(bottom);

    connect(m_search, &QLineEdit::textChanged, &m_state, &AppListState::setSearchText);
    connect(m_selectAll, &QCheckBox::clicked, &m_state, &AppListState::setAllSelected);
    connect(m_forceMode, &QCheckBox::toggled, &m_state, &AppListState::setForceMode);
    connect(m_quit, &QPushButton::clicked, &m_state, &AppListState::quitSelected);
    connect(&m_state, &AppListState::changed, this, &AppListView::sync);
    connect(&m_state, &AppListState::focusSearchRequested, this, &AppListView::focusSearch);

    addShortcut(this, AppCommand::focusSearch, [this] { focusSearch(); });
    addShortcut(this, AppCommand::selectAll, [this] {
        if (!m_state.isConfirmingForceQuit()) {
            m_state.toggleAll();
        }
    });
    addShortcut(this, AppCommand::quitSelected, [this] {
        if (!m_state.isConfirmingForceQuit()) {
            m_state.quitSelected();
        }
    });

    applyColors();
    sync();
}

void AppListView::focusSearch() {
    activateWindow();
    m_search->setFocus(Qt::ShortcutFocusReason);
    m_search->selectAll();
}

void AppListView::sync() {
    if (m_search->text() != m_state.searchText()) {
        m_search->setText(m_state.searchText());
    }
    m_selectAll->setChecked(m_state.allSelected());
    m_selectAll->setEnabled(!m_state.visibleApps().isEmpty());
    m_selectAll->setToolTip(m_state.selectAllHelp());
    m_forceMode->setChecked(m_state.isForceMode());
    m_count->setText(m_state.countText());
    m_quit->setText(m_state.quitButtonTitle());
    m_quit->setToolTip(m_state.quitButtonHelp());
    m_quit->setEnabled(m_state.canQuitSelected() && !m_state.isConfirmingForceQuit());

    if (m_state.isConfirmingForceQuit()) {
        m_confirmTitle->setText(m_state.confirmationTitle());
        m_pages->setCurrentIndex(ConfirmPage);
        m_confirmButton->setFocus();
    } else if (m_state.visibleApps().isEmpty()) {
        m_emptyText->setText(m_state.emptyText());
        m_pages->setCurrentIndex(EmptyPage);
    } else {
        m_pages->setCurrentIndex(ListPage);
    }
    if (m_state.isForceMode() != m_colorsForForce) {
        applyColors();
    }
    fitHeight();
    m_list->viewport()->update();
}

void AppListView::applyColors() {
    m_colorsForForce = m_state.isForceMode();
    const QPalette base = palette();
    QColor secondary = base.color(QPalette::Text);
    secondary.setAlphaF(0.55f);
    QColor tertiary = base.color(QPalette::Text);
    tertiary.setAlphaF(0.3f);

    m_search->actions().constFirst()->setIcon(glyph(QStringLiteral("search"), secondary));
    if (m_settings) {
        m_settings->setIcon(glyph(QStringLiteral("settings"), secondary));
    }
    m_emptyIcon->setPixmap(
        glyph(QStringLiteral("checkmark-circle"), tertiary, 40).pixmap(40, 40, QIcon::Normal));
    QPalette secondaryText = base;
    secondaryText.setColor(QPalette::WindowText, secondary);
    m_emptyText->setPalette(secondaryText);
    m_count->setPalette(secondaryText);

    // The main button is the prominent one: the accent colour, or red while forcing.
    const QColor fill = m_state.isForceMode() ? kForceRed : base.color(QPalette::Highlight);
    for (QPushButton* button : {m_quit, m_confirmButton}) {
        QPalette prominent = base;
        const QColor color = (button == m_confirmButton ? kForceRed : fill).darker(110);
        prominent.setColor(QPalette::Button, color);
        prominent.setColor(QPalette::ButtonText, Qt::white);
        button->setPalette(prominent);
    }
}

void AppListView::fitHeight() {
    const int rows = std::clamp(static_cast<int>(m_state.visibleApps().size()), kMinRows, kMaxRows);
    m_pages->setFixedHeight(rows * AppRowDelegate::kRowHeight + 2);
    if (window() != this && window()->isVisible()) {
        window()->adjustSize();
    }
}

bool AppListView::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) {
        return QWidget::eventFilter(watched, event);
    }
    const auto* key = static_cast<QKeyEvent*>(event);
    if (watched == m_search && key->key() == Qt::Key_Down && m_model->rowCount() > 0) {
        // From the search straight into the rows, as in any filtered list.
        m_list->setFocus(Qt::TabFocusReason);
        m_list->setCurrentIndex(m_model->index(0));
        return true;
    }
    if (watched == m_list && key->key() == Qt::Key_Space && m_list->currentIndex().isValid()) {
        const qint32 pid = m_list->currentIndex().data(AppListModel::PidRole).toInt();
        m_state.setSelected(pid, !m_state.isSelected(pid));
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void AppListView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && m_state.isConfirmingForceQuit()) {
        // Escape backs out of the confirmation before it closes the list.
        m_state.cancelForceQuit();
        event->accept();
        return;
    }
    QWidget::keyPressEvent(event);
}

void AppListView::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        applyColors();
    }
    QWidget::changeEvent(event);
}

} // namespace vantle
