#include "PopupPlacement.h"

#include <algorithm>

namespace lumora::app {

QPoint popupPosition(const QRect& icon, const QSize& size, const QRect& screen) {
    const QRect anchor = icon.isEmpty() ? QRect(icon.topLeft(), QSize(1, 1)) : icon;
    int x = anchor.center().x() - size.width() / 2;
    int y = anchor.bottom() + 1 + kPopupGap;
    const bool fitsBelow = y + size.height() <= screen.bottom() + 1;
    const int above = anchor.top() - kPopupGap - size.height();
    if (!fitsBelow && above >= screen.top()) y = above;
    // Right and bottom edges first, so that the top-left edges win for an oversized panel.
    x = std::max(std::min(x, screen.right() + 1 - size.width()), screen.left());
    y = std::max(std::min(y, screen.bottom() + 1 - size.height()), screen.top());
    return {x, y};
}

}  // namespace lumora::app
