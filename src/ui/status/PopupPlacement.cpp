#include "ui/status/PopupPlacement.h"

#include <algorithm>

namespace vantle {

namespace {
// A little air between the panel and the popup.
constexpr int kGap = 4;
} // namespace

QPoint popupPosition(const QRect& icon, const QPoint& pointer, const QSize& size,
                     const QRect& available) {
    const QRect anchor = icon.isValid() && !icon.isEmpty() ? icon : QRect(pointer, QSize(1, 1));
    int x = anchor.center().x() - size.width() / 2;
    int y = anchor.center().y() < available.center().y() ? anchor.bottom() + 1 + kGap
                                                         : anchor.top() - kGap - size.height();
    // A popup larger than the area keeps its top-left corner on screen.
    x = std::max(available.left(), std::min(x, available.right() + 1 - size.width()));
    y = std::max(available.top(), std::min(y, available.bottom() + 1 - size.height()));
    return {x, y};
}

} // namespace vantle
