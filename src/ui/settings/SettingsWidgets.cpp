#include "ui/settings/SettingsWidgets.h"

#include "model/ProductTexts.h"
#include "ui/applist/Glyph.h"

#include <QLabel>
#include <QLayout>
#include <QPalette>
#include <QWidget>

namespace vantle {

namespace {

void collectFocusable(QLayout* layout, QList<QWidget*>& widgets);

void collectFocusable(QWidget* widget, QList<QWidget*>& widgets) {
    // Hidden on purpose (a picker its setting does not apply to); not merely not shown yet.
    if (widget->testAttribute(Qt::WA_WState_ExplicitShowHide) && widget->isHidden()) {
        return;
    }
    if (widget->layout()) {
        collectFocusable(widget->layout(), widgets);
        return;
    }
    if (widget->focusPolicy() & Qt::TabFocus) {
        widgets.append(widget);
    }
}

void collectFocusable(QLayout* layout, QList<QWidget*>& widgets) {
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem* item = layout->itemAt(i);
        if (item->widget()) {
            collectFocusable(item->widget(), widgets);
        } else if (item->layout()) {
            collectFocusable(item->layout(), widgets);
        }
    }
}

} // namespace

QString productText(const QString& text) {
    return ProductTexts::translated(text);
}

QLabel* sectionHeading(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

QLabel* helpText(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, secondaryColor(label));
    label->setPalette(palette);
    return label;
}

QLabel* warningText(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, QColor(0xE0, 0x7B, 0x00));
    label->setPalette(palette);
    return label;
}

QIcon symbolIcon(const QString& symbol, const QColor& color, int size) {
    QString name = symbol;
    if (name == QLatin1String("magnifyingglass")) {
        name = QStringLiteral("search");
    }
    return glyph(name.replace(QLatin1Char('.'), QLatin1Char('-')), color, size);
}

QColor secondaryColor(const QWidget* widget) {
    return widget->palette().color(QPalette::PlaceholderText);
}

void chainTabOrder(QWidget* root) {
    QList<QWidget*> widgets;
    collectFocusable(root, widgets);
    for (qsizetype i = 1; i < widgets.size(); ++i) {
        QWidget::setTabOrder(widgets[i - 1], widgets[i]);
    }
}

} // namespace vantle
