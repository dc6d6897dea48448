#include "PopupPlacement.h"

#include <gtest/gtest.h>

namespace lumora::app {
namespace {

// A 1920×1080 screen whose top 28 pixels belong to the panel bar.
const QRect kScreen(0, 28, 1920, 1052);
const QSize kPanel(380, 600);

TEST(PopupPlacement, CentredUnderAnIconInTheMiddleOfATopBar) {
    const QRect icon(900, 2, 24, 24);  // centre x = 911, bottom = 25
    EXPECT_EQ(popupPosition(icon, kPanel, kScreen), QPoint(911 - 190, 26 + kPopupGap));
}

TEST(PopupPlacement, KeptOnTheScreenAtTheEdges) {
    // The tray's usual place, the top-right corner: pushed left to the screen's edge, and
    // below the bar even though the icon sits on it.
    EXPECT_EQ(popupPosition(QRect(1890, 2, 24, 24), kPanel, kScreen), QPoint(1920 - 380, 30));
    EXPECT_EQ(popupPosition(QRect(0, 2, 24, 24), kPanel, kScreen), QPoint(0, 30));
}

TEST(PopupPlacement, AboveAnIconInABottomBar) {
    const QRect icon(1800, 1048, 24, 24);
    // A bar that hides itself leaves the whole screen available.
    const QRect wholeScreen(0, 0, 1920, 1080);
    EXPECT_EQ(popupPosition(icon, kPanel, wholeScreen), QPoint(1920 - 380, 1048 - kPopupGap - 600));
    // A bar that stays takes its strip off the available area; the panel ends where it starts.
    const QRect aboveBar(0, 0, 1920, 1040);
    EXPECT_EQ(popupPosition(icon, kPanel, aboveBar), QPoint(1920 - 380, 1040 - 600));
}

TEST(PopupPlacement, LargerThanTheScreenStartsAtItsTopLeft) {
    const QRect small(100, 50, 300, 400);
    EXPECT_EQ(popupPosition(QRect(200, 60, 20, 20), kPanel, small), QPoint(100, 50));
}

TEST(PopupPlacement, UnknownIconPlaceUsesThePointAlone) {
    // Trays that do not tell report an empty rectangle; the click position stands in.
    EXPECT_EQ(popupPosition(QRect(QPoint(1000, 300), QSize()), kPanel, kScreen),
              QPoint(1000 - 190, 301 + kPopupGap));
}

}  // namespace
}  // namespace lumora::app
