#pragma once

#include "system/WarningSeconds.h"

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QPixmap>

class QLabel;
class QWidget;

namespace vantle {

class PanelPlacement;

// Pieces shared by the warning services and their countdown panels.

// The panels' symbol colour.
inline const QColor kCountdownOrange(255, 149, 0);
// `icon` at `size` points, keeping only its shape and filling it orange.
QPixmap tintedSymbol(const QIcon& icon, int size, qreal devicePixelRatio);
// A plain-text label centred at the top of its cell.
QLabel* centredLabel(const QFont& font, QWidget* parent);

// Shows `panel` as a fixed-size countdown panel centred on the main screen: above other windows,
// on every workspace, without taking the keyboard. It deletes itself once closed and never quits
// the app. Install any close watcher before calling.
void showFloatingPanel(QWidget& panel, const QString& title, QSize size, PanelPlacement& placement);

} // namespace vantle
