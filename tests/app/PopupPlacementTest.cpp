#include "PopupPlacement.h"

#include <gtest/gtest.h>

namespace lumora::app {
namespace {

TEST(PopupPlacement, UnderOrAboveTheIconAndAlwaysOnTheScreen) {
    const QSize panel(380, 600);
    const QRect underTopBar(0, 28, 1920, 1052);  // the bar's top 28 pixels are not available
    struct Case {
        const char* what;
        QRect icon, screen;
        QPoint expected;
    };
    const Case cases[] = {
        {"centred under an icon in the middle of a top bar",
         {900, 2, 24, 24},
         underTopBar,
         {911 - 190, 26 + kPopupGap}},
        // Below the bar even though the icon sits on it.
        {"pushed left in the top-right corner", {1890, 2, 24, 24}, underTopBar, {1920 - 380, 30}},
        {"above an icon in a bar that hides itself",
         {1800, 1048, 24, 24},
         {0, 0, 1920, 1080},
         {1920 - 380, 1048 - kPopupGap - 600}},
        {"ending where a bar that stays starts",
         {1800, 1048, 24, 24},
         {0, 0, 1920, 1040},
         {1920 - 380, 1040 - 600}},
        {"larger than the screen: at its top-left",
         {200, 60, 20, 20},
         {100, 50, 300, 400},
         {100, 50}},
        // Trays that do not tell report an empty rectangle; the click position stands in.
        {"unknown icon place",
         QRect(QPoint(1000, 300), QSize()),
         underTopBar,
         {1000 - 190, 301 + kPopupGap}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(popupPosition(c.icon, panel, c.screen), c.expected) << c.what;
}

}  // namespace
}  // namespace lumora::app
