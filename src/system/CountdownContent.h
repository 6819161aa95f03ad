#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

namespace vantle {

// The shape above a countdown panel's title; the panel decides how to draw it.
enum class CountdownSymbol { timer, sleep, sunrise, power, restart };

// What a countdown panel shows besides the seconds left, so one panel serves every warning.
struct CountdownContent {
    QString windowTitle;
    QSize panelSize;
    CountdownSymbol symbol = CountdownSymbol::timer;
    QString title;
    // Space between the title and the countdown under it.
    int headingSpacing = 10;
    // A note under the countdown; none when empty.
    QString caption;
    // Listed one a line below; names come from other programs and are never markup.
    QStringList names;
    // The button that goes ahead at once; Cancel is always beside it.
    QString confirmLabel;
};

} // namespace vantle
