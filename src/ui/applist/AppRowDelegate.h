#pragma once

#include <QRect>
#include <QStyledItemDelegate>

namespace vantle {

class AppListState;

// Draws one app row (tick, icon, name, "bg" mark, quit button) and handles its clicks: the quit
// button quits that app, anywhere else toggles the tick. Hover lights the row and brings the quit
// button to full strength.
class AppRowDelegate final : public QStyledItemDelegate {
    Q_OBJECT
public:
    static constexpr int kRowHeight = 32;

    explicit AppRowDelegate(AppListState& state, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

    // Where the parts of a row lie, for a row occupying `row`.
    static QRect checkRect(const QRect& row);
    static QRect iconRect(const QRect& row);
    static QRect quitRect(const QRect& row);

private:
    AppListState& m_state;
};

} // namespace vantle
