#include "ui/settings/ExclusionsTab.h"

#include "platform/Platform.h"
#include "ui/applist/Glyph.h"
#include "ui/settings/AppChooserDialog.h"
#include "ui/settings/ExclusionsState.h"

#include <QCheckBox>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace vantle {

namespace {

constexpr int kIconSize = 20;

QLabel* sectionTitle(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    return label;
}

// A framed group of rows, as the other tabs draw their sections.
QFrame* group(QWidget* parent) {
    auto* frame = new QFrame(parent);
    frame->setFrameShape(QFrame::StyledPanel);
    auto* layout = new QVBoxLayout(frame);
    layout->setContentsMargins(10, 8, 10, 8);
    layout->setSpacing(8);
    return frame;
}

QLabel* iconLabel(const QIcon& icon, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setPixmap(icon.pixmap(kIconSize, kIconSize));
    label->setFixedSize(kIconSize, kIconSize);
    return label;
}

} // namespace

ExclusionsTab::ExclusionsTab(const SettingsContext& context, QWidget* parent)
    : QWidget(parent)
    , m_context(context)
    , m_state(new ExclusionsState(context.settings, context.apps, this))
    , m_layout(new QVBoxLayout(this)) {
    m_layout->setContentsMargins(28, 20, 28, 20);
    m_layout->setSpacing(10);
    auto* header = new QHBoxLayout;
    auto* intro = new QLabel(tr("Excluded apps are never quit by the system idle feature."), this);
    intro->setWordWrap(true);
    header->addWidget(intro, 1);
    auto* add = new QPushButton(tr("Add App"), this);
    add->setObjectName(QStringLiteral("addApp"));
    header->addWidget(add);
    m_layout->addLayout(header);
    m_layout->addStretch();

    connect(add, &QPushButton::clicked, this, &ExclusionsTab::chooseApps);
    connect(m_state, &ExclusionsState::changed, this, &ExclusionsTab::rebuild);
    rebuild();
}

void ExclusionsTab::rebuild() {
    // A switch may be the one whose change led here, so the old rows go once it has returned.
    if (m_lists) {
        m_lists->hide();
        m_lists->deleteLater();
    }
    m_lists = new QWidget(this);
    m_lists->setObjectName(QStringLiteral("exclusionLists"));
    auto* lists = new QVBoxLayout(m_lists);
    lists->setContentsMargins(0, 0, 0, 0);
    lists->setSpacing(8);
    const QColor quiet = palette().color(QPalette::PlaceholderText);

    lists->addWidget(sectionTitle(tr("Running Apps"), m_lists));
    QFrame* running = group(m_lists);
    running->setObjectName(QStringLiteral("runningApps"));
    const QList<ExclusionsState::RunningApp> apps = m_state->runningApps();
    if (apps.isEmpty()) {
        auto* none = new QLabel(tr("No apps running"), running);
        none->setObjectName(QStringLiteral("noAppsRunning"));
        none->setForegroundRole(QPalette::PlaceholderText);
        running->layout()->addWidget(none);
    }
    const QIcon appFill = glyph(QStringLiteral("app-fill"), quiet, kIconSize);
    for (const ExclusionsState::RunningApp& row : apps) {
        auto* line = new QHBoxLayout;
        line->addWidget(iconLabel(row.app.icon.isNull() ? appFill : row.app.icon, running));
        line->addWidget(new QLabel(row.app.name, running), 1);
        auto* toggle = new QCheckBox(running);
        toggle->setObjectName(QStringLiteral("exclude-%1").arg(row.app.id));
        toggle->setAccessibleName(tr("Exclude %1").arg(row.app.name));
        toggle->setChecked(row.excluded);
        if (!row.app.bundleIdentifier) {
            // Nothing to store: the app has no desktop entry to be known by.
            toggle->setEnabled(false);
            toggle->setToolTip(tr("No desktop entry, so there's nothing for Vantle to match "
                                  "against."));
        }
        connect(toggle, &QCheckBox::toggled, this,
                [this, app = row.app](bool on) { m_state->setExcluded(app, on); });
        line->addWidget(toggle);
        static_cast<QVBoxLayout*>(running->layout())->addLayout(line);
    }
    lists->addWidget(running);

    const QStringList absent = m_state->notRunning();
    if (!absent.isEmpty()) {
        lists->addWidget(sectionTitle(tr("Not Currently Running"), m_lists));
        QFrame* others = group(m_lists);
        others->setObjectName(QStringLiteral("notRunning"));
        const QIcon dashed = glyph(QStringLiteral("app-dashed"), quiet, kIconSize);
        for (const QString& id : absent) {
            auto* line = new QHBoxLayout;
            line->addWidget(iconLabel(dashed, others));
            auto* name = new QLabel(id, others);
            name->setTextInteractionFlags(Qt::TextSelectableByMouse);
            line->addWidget(name, 1);
            auto* remove = new QToolButton(others);
            remove->setObjectName(QStringLiteral("remove-%1").arg(id));
            remove->setIcon(QIcon::fromTheme(QStringLiteral("list-remove")));
            remove->setText(tr("Remove"));
            remove->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
            remove->setAccessibleName(tr("Remove %1").arg(id));
            connect(remove, &QToolButton::clicked, this, [this, id] { m_state->remove(id); });
            line->addWidget(remove);
            static_cast<QVBoxLayout*>(others->layout())->addLayout(line);
        }
        lists->addWidget(others);
    }
    // Under the header, above the closing stretch.
    m_layout->insertWidget(1, m_lists);
}

void ExclusionsTab::chooseApps() {
    if (!m_context.platform.applications) {
        return;
    }
    m_context.platform.alerts->activateApp();
    auto* chooser = new AppChooserDialog(
        *m_context.platform.applications,
        tr("Choose apps that should never be quit by the system idle sweep."), tr("Exclude"), this);
    chooser->setAttribute(Qt::WA_DeleteOnClose);
    connect(chooser, &AppChooserDialog::chosen, this, &ExclusionsTab::exclude);
    chooser->open();
}

void ExclusionsTab::exclude(const QList<ApplicationCatalog::Application>& apps,
                            const QStringList& files) {
    QList<ExclusionsState::ChosenApp> chosen;
    for (const ApplicationCatalog::Application& app : apps) {
        chosen.append({app.name, app.id});
    }
    for (const QString& file : files) {
        const auto app = m_context.platform.applications
                             ? m_context.platform.applications->applicationAt(file)
                             : std::nullopt;
        if (app) {
            chosen.append({app->name, app->id});
        } else {
            chosen.append({QFileInfo(file).completeBaseName(), std::nullopt});
        }
    }
    if (const auto refusal = m_state->addChosen(chosen)) {
        m_context.platform.alerts->runModal({refusal->title, refusal->text, {tr("OK")}});
    }
}

} // namespace vantle
