#include "OsdGeometry.h"

#include <algorithm>
#include <cmath>

namespace lumora::ui {

namespace osd {

QRect fromBottomLeft(int x, int y, int width, int height) {
    return {x, kHeight - y - height, width, height};
}

QRect symbolRect() {
    return fromBottomLeft(14, 20, 24, 24);
}
QRect barRect() {
    return fromBottomLeft(48, 26, 120, 12);
}
QRect labelRect() {
    return fromBottomLeft(170, 23, 44, 18);
}

}  // namespace osd

QRect osdFrame(const QRect& screenFrame) {
    const double middle = screenFrame.x() + screenFrame.width() / 2.0;
    const double bottom = screenFrame.y() + screenFrame.height();
    const double left = middle - osd::kWidth / 2.0;
    const double top = bottom - osd::kBottomOffset * screenFrame.height() - osd::kHeight;
    return {static_cast<int>(std::lround(left)), static_cast<int>(std::lround(top)), osd::kWidth,
            osd::kHeight};
}

QString osdText(double level, const std::optional<std::string>& text) {
    if (text) return QString::fromStdString(*text);
    const double shown = std::isfinite(level) ? level : 0.0;
    return QString::number(std::lround(shown * 100)) + QStringLiteral(" %");
}

int osdSegments(double level) {
    if (!std::isfinite(level)) return 0;
    return static_cast<int>(std::lround(std::clamp(level, 0.0, 1.0) * osd::kSegments));
}

}  // namespace lumora::ui
