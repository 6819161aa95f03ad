#include "ui/applist/AppRowDelegate.h"

#include "ui/applist/AppListModel.h"
#include "ui/applist/AppListState.h"
#include "ui/applist/Glyph.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

namespace vantle {

namespace {
constexpr int kMargin = 10;
constexpr int kGap = 8;
constexpr int kCheck = 16;
constexpr int kIcon = 20;
constexpr int kQuit = 22;
// The quit button sits back until the row is hovered.
constexpr qreal kRestingOpacity = 0.25;
const QColor kForceRed(0xe5, 0x48, 0x4d);

QColor secondary(const QPalette& palette) {
    QColor color = palette.color(QPalette::Text);
    color.setAlphaF(0.55f);
    return color;
}
} // namespace

AppRowDelegate::AppRowDelegate(AppListState& state, QObject* parent)
    : QStyledItemDelegate(parent)
    , m_state(state) {}

QRect AppRowDelegate::checkRect(const QRect& row) {
    return {row.left() + kMargin, row.center().y() - kCheck / 2 + 1, kCheck, kCheck};
}

QRect AppRowDelegate::iconRect(const QRect& row) {
    return {checkRect(row).right() + 1 + kGap, row.center().y() - kIcon / 2 + 1, kIcon, kIcon};
}

QRect AppRowDelegate::quitRect(const QRect& row) {
    return {row.right() - kMargin - kQuit + 1, row.center().y() - kQuit / 2 + 1, kQuit, kQuit};
}

QSize AppRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return {option.rect.width(), kRowHeight};
}

void AppRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                           const QModelIndex& index) const {
    const QRect row = option.rect;
    const QPalette& palette = option.palette;
    const bool hovered = option.state.testFlag(QStyle::State_MouseOver);
    const bool focused = option.state.testFlag(QStyle::State_HasFocus);
    const bool selected = index.data(AppListModel::SelectedRole).toBool();
    const QWidget* widget = option.widget;
    QStyle* style = widget ? widget->style() : QApplication::style();

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (hovered || focused) {
        QColor wash = palette.color(QPalette::Text);
        wash.setAlphaF(focused && !hovered ? 0.10f : 0.06f);
        painter->setPen(Qt::NoPen);
        painter->setBrush(wash);
        painter->drawRoundedRect(row.adjusted(4, 1, -4, -1), 6, 6);
    }

    QStyleOptionButton check;
    check.rect = checkRect(row);
    check.state = QStyle::State_Enabled | (selected ? QStyle::State_On : QStyle::State_Off);
    check.palette = palette;
    style->drawPrimitive(QStyle::PE_IndicatorCheckBox, &check, painter, widget);

    const QIcon icon = index.data(Qt::DecorationRole).value<QIcon>();
    const QRect iconArea = iconRect(row);
    if (!icon.isNull()) {
        icon.paint(painter, iconArea);
    } else {
        glyph(QStringLiteral("app-fill"), secondary(palette), kIcon).paint(painter, iconArea);
    }

    const QRect quitArea = quitRect(row);
    int textRight = quitArea.left() - kGap;
    if (index.data(AppListModel::BackgroundRole).toBool()) {
        QFont small = option.font;
        small.setPointSizeF(small.pointSizeF() * 0.8);
        const QFontMetrics metrics(small);
        const QString mark = QStringLiteral("bg");
        const int width = metrics.horizontalAdvance(mark) + 8;
        const QRect markArea(textRight - width, row.center().y() - metrics.height() / 2, width,
                             metrics.height());
        painter->setFont(small);
        painter->setPen(secondary(palette));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(QRectF(markArea).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
        painter->drawText(markArea, Qt::AlignCenter, mark);
        textRight = markArea.left() - kGap;
    }

    const int textLeft = iconArea.right() + 1 + kGap;
    const QRect textArea(textLeft, row.top(), std::max(0, textRight - textLeft), row.height());
    painter->setFont(option.font);
    painter->setPen(selected ? palette.color(QPalette::Text) : secondary(palette));
    const QString name = option.fontMetrics.elidedText(index.data(Qt::DisplayRole).toString(),
                                                       Qt::ElideRight, textArea.width());
    painter->drawText(textArea, Qt::AlignVCenter | Qt::AlignLeft, name);

    painter->setOpacity(hovered ? 1.0 : kRestingOpacity);
    const QColor quitColor = m_state.isForceMode() ? kForceRed : palette.color(QPalette::Text);
    glyph(QStringLiteral("power"), quitColor, 14).paint(painter, quitArea.adjusted(4, 4, -4, -4));
    painter->restore();
}

bool AppRowDelegate::editorEvent(QEvent* event, QAbstractItemModel*,
                                 const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() != QEvent::MouseButtonRelease || !index.isValid()) {
        return false;
    }
    const auto* mouse = static_cast<QMouseEvent*>(event);
    if (mouse->button() != Qt::LeftButton || !option.rect.contains(mouse->position().toPoint())) {
        return false;
    }
    const qint32 pid = index.data(AppListModel::PidRole).toInt();
    if (quitRect(option.rect).contains(mouse->position().toPoint())) {
        m_state.quitOne(pid);
    } else {
        m_state.setSelected(pid, !m_state.isSelected(pid));
    }
    return true;
}

bool AppRowDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                               const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() == QEvent::ToolTip && index.isValid() &&
        quitRect(option.rect).contains(event->pos())) {
        const auto* model = qobject_cast<const AppListModel*>(index.model());
        if (model) {
            QToolTip::showText(event->globalPos(), m_state.rowQuitHelp(model->app(index.row())),
                               view, quitRect(option.rect));
            return true;
        }
    }
    return QStyledItemDelegate::helpEvent(event, view, option, index);
}

} // namespace vantle
