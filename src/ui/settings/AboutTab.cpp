#include "ui/settings/AboutTab.h"

#include "model/ProductTexts.h"
#include "platform/BundleInfo.h"
#include "platform/Platform.h"
#include "ui/AppearancePalette.h"
#include "ui/applist/Glyph.h"
#include "ui/settings/SettingsContext.h"

#include <QDesktopServices>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace vantle {

namespace {

constexpr int kIconSize = 72;
constexpr int kSymbolSize = 20;

struct Feature {
    const char* symbol;
    QString title;
    QString detail;
};

QLabel* wrapped(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    return label;
}

QFont scaled(QFont font, qreal factor, bool bold) {
    font.setPointSizeF(font.pointSizeF() * factor);
    font.setBold(bold);
    return font;
}

} // namespace

QString AboutTab::versionLine(const BundleInfo& bundle) {
    const QString version = bundle.shortVersion().value_or(QStringLiteral("—"));
    const std::optional<QString> build = bundle.buildNumber();
    QString line = tr("Version %1").arg(version);
    if (build && *build != version) {
        line += QStringLiteral(" (") + *build + QLatin1Char(')');
    }
    return line;
}

QString AboutTab::tipServiceName() {
    return QStringLiteral(VANTLE_TIP_SERVICE).trimmed();
}

QString AboutTab::tipPageAddress() {
    return QStringLiteral(VANTLE_TIP_URL).trimmed();
}

AboutTab::AboutTab(const SettingsContext& context, QWidget* parent)
    : QWidget(parent) {
    const ProductTexts& texts = *context.platform.texts;
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 24, 28, 20);
    layout->setSpacing(6);

    m_icon = new QLabel(this);
    m_icon->setAlignment(Qt::AlignCenter);
    layout->addWidget(m_icon);

    auto* name = new QLabel(QStringLiteral("Vantle"), this);
    name->setFont(scaled(font(), 1.6, true));
    auto* version = new QLabel(versionLine(*context.platform.bundle), this);
    version->setObjectName(QStringLiteral("version"));
    version->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* tagline = new QLabel(ProductTexts::translated(texts.aboutTagline), this);
    auto* maker = new QLabel(tr("by Pelmark"), this);
    for (QLabel* label : {name, version, tagline, maker}) {
        label->setAlignment(Qt::AlignCenter);
        layout->addWidget(label);
    }
    version->setForegroundRole(QPalette::PlaceholderText);
    maker->setForegroundRole(QPalette::PlaceholderText);
    layout->addSpacing(14);

    const QList<Feature> features{
        {"xmark-circle", tr("Quit on demand"), ProductTexts::translated(texts.quitOnDemandDetail)},
        {"timer", tr("Auto-quit"), tr("Hide or quit an app after its own idle period.")},
        {"moon-zzz", tr("System idle"), ProductTexts::translated(texts.systemIdleDetail)},
        {"calendar-clock", tr("Schedules"), tr("Sleep, wake, restart, or shut down at set times.")},
        {"keyboard", tr("Keyboard shortcuts"),
         tr("Quit everything, sleep, restart or shut down from any app.")},
    };
    for (const Feature& feature : features) {
        auto* row = new QHBoxLayout;
        row->setSpacing(12);
        auto* symbol = new QLabel(this);
        symbol->setFixedSize(kSymbolSize + 8, kSymbolSize + 8);
        symbol->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
        m_symbols.append({symbol, QString::fromLatin1(feature.symbol)});
        auto* title = new QLabel(feature.title, this);
        title->setFont(scaled(font(), 1.0, true));
        auto* detail = wrapped(feature.detail, this);
        detail->setForegroundRole(QPalette::PlaceholderText);
        auto* words = new QVBoxLayout;
        words->setSpacing(1);
        words->addWidget(title);
        words->addWidget(detail);
        row->addWidget(symbol, 0, Qt::AlignTop);
        row->addLayout(words, 1);
        layout->addLayout(row);
        layout->addSpacing(4);
    }

    const QString service = tipServiceName();
    const QUrl page(tipPageAddress());
    if (!service.isEmpty() && page.isValid() && !page.host().isEmpty()) {
        layout->addSpacing(8);
        m_tipBox = new QWidget(this);
        m_tipBox->setObjectName(QStringLiteral("tipBox"));
        m_tipBox->setAutoFillBackground(true);
        auto* box = new QHBoxLayout(m_tipBox);
        box->setContentsMargins(14, 12, 14, 12);
        box->setSpacing(12);
        auto* cup = new QLabel(m_tipBox);
        cup->setFixedSize(kSymbolSize + 8, kSymbolSize + 8);
        m_symbols.append({cup, QStringLiteral("cup")});
        auto* title = new QLabel(tr("Support Vantle"), m_tipBox);
        title->setFont(scaled(font(), 1.0, true));
        auto* text =
            wrapped(tr("Vantle is free. If it saves you time, a tip on %1 helps keep it going.")
                        .arg(service),
                    m_tipBox);
        auto* button = new QPushButton(tr("Support on %1").arg(service), m_tipBox);
        button->setObjectName(QStringLiteral("tipButton"));
        button->setToolTip(tr("Opens %1 in your browser.").arg(page.host()));
        connect(button, &QPushButton::clicked, this, [page] { QDesktopServices::openUrl(page); });
        auto* words = new QVBoxLayout;
        words->addWidget(title);
        words->addWidget(text);
        words->addWidget(button, 0, Qt::AlignLeft);
        box->addWidget(cup, 0, Qt::AlignTop);
        box->addLayout(words, 1);
        layout->addWidget(m_tipBox);
    }

    layout->addStretch(1);
    auto* copyright = new QLabel(QStringLiteral(VANTLE_COPYRIGHT), this);
    copyright->setAlignment(Qt::AlignCenter);
    copyright->setFont(scaled(font(), 0.85, false));
    copyright->setForegroundRole(QPalette::PlaceholderText);
    layout->addWidget(copyright);

    refreshDecoration();
}

void AboutTab::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !m_refreshing) {
        refreshDecoration();
    }
}

void AboutTab::refreshDecoration() {
    m_refreshing = true;
    const QPalette current = palette();
    const bool dark = AppearancePalette::isDark(current);
    const QColor ink = current.color(QPalette::WindowText);
    const QColor accent = current.color(QPalette::Highlight);
    const QIcon themed = QIcon::fromTheme(QStringLiteral(VANTLE_BUNDLE_ID));
    const QIcon icon =
        themed.isNull() ? glyph(QStringLiteral("vantle-tray"), ink, kIconSize) : themed;
    m_icon->setPixmap(icon.pixmap(kIconSize, kIconSize));
    for (const auto& [label, name] : m_symbols) {
        label->setPixmap(glyph(name, accent, kSymbolSize).pixmap(kSymbolSize, kSymbolSize));
    }
    if (m_tipBox) {
        // A faint wash of the window colour: lighter on dark, darker on light.
        QPalette boxPalette = m_tipBox->palette();
        const QColor window = current.color(QPalette::Window);
        boxPalette.setColor(QPalette::Window, dark ? window.lighter(135) : window.darker(106));
        m_tipBox->setPalette(boxPalette);
    }
    m_refreshing = false;
}

} // namespace vantle
