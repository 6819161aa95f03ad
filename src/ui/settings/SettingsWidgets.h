#pragma once

#include <QColor>
#include <QIcon>
#include <QString>

class QLabel;
class QLayout;
class QWidget;

namespace vantle {

// Small pieces every settings tab draws the same way.

// A text of ProductTexts, through the translation like every other text shown.
QString productText(const QString& text);
// A section's bold heading.
QLabel* sectionHeading(const QString& text, QWidget* parent = nullptr);
// A wrapped explanation in the palette's secondary colour.
QLabel* helpText(const QString& text, QWidget* parent = nullptr);
// A wrapped warning line in orange, for what does not work as the user set it up.
QLabel* warningText(const QString& text, QWidget* parent = nullptr);
// The app's drawing of a system symbol ("minus.circle.fill"), in `color`.
QIcon symbolIcon(const QString& symbol, const QColor& color, int size = 16);
// The palette's secondary text colour.
QColor secondaryColor(const QWidget* widget);
// Makes Tab visit every focusable control under `root` in the order its layouts place them, so
// rows added later are not left at the end of the chain.
void chainTabOrder(QWidget* root);

} // namespace vantle
