#pragma once

#include <QRect>
#include <QString>
#include <optional>
#include <string>

namespace lumora::ui {

// The on-screen display's fixed layout and the rules for what it shows. Layout rectangles
// are in the panel's own coordinates with the origin at its top-left (the layout is drawn up
// from the bottom-left; osdRect converts).
namespace osd {

inline constexpr int kWidth = 220;
inline constexpr int kHeight = 64;
inline constexpr int kCornerRadius = 14;
inline constexpr int kSegments = 16;
// The panel's bottom edge stands this fraction of the screen's height above the screen's
// bottom edge.
inline constexpr double kBottomOffset = 0.14;

// A rectangle given from the panel's bottom-left corner, in the panel's top-left coordinates.
[[nodiscard]] QRect fromBottomLeft(int x, int y, int width, int height);
[[nodiscard]] QRect symbolRect();  // (14, 20) 24 × 24
[[nodiscard]] QRect barRect();     // (48, 26) 120 × 12
[[nodiscard]] QRect labelRect();   // (170, 23) 44 × 18

}  // namespace osd

// Where the panel goes on a screen (global coordinates, y down): centred horizontally, its
// bottom edge 14 % of the screen's height above the screen's bottom.
[[nodiscard]] QRect osdFrame(const QRect& screenFrame);
// The text: `text` when given, else the rounded percentage followed by " %".
[[nodiscard]] QString osdText(double level, const std::optional<std::string>& text);
// Lit segments of the sixteen, for a level 0…1 (clamped).
[[nodiscard]] int osdSegments(double level);

}  // namespace lumora::ui
