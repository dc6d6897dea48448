#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace lumora::app {

// Room left between the tray icon and the panel that opens from it.
inline constexpr int kPopupGap = 4;

// Where a panel of `size` opened from the tray icon at `icon` goes, inside `screen` (the
// available area, global coordinates): centred under the icon; above it when the tray sits at
// the bottom of the screen; always wholly on the screen, the top-left corner winning when
// the panel is larger than the screen. An empty `icon` (some trays do not tell where they
// are) counts as a point there.
QPoint popupPosition(const QRect& icon, const QSize& size, const QRect& screen);

}  // namespace lumora::app
