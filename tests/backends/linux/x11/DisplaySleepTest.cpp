#include "x11/X11DisplaySleep.h"

#include <gtest/gtest.h>

#include <thread>

#include "X11Fixture.h"

#ifdef LUMORA_TEST_XSS
#include <X11/extensions/scrnsaver.h>
#endif

namespace lumora::lx {
namespace {

using X11DisplaySleepTest = test::X11Fixture;

TEST_F(X11DisplaySleepTest, SleepsThroughDpmsAndWakingResetsTheIdleTime) {
    auto displays = X11DisplaySleep::open(display());
    ASSERT_TRUE(displays);
    const bool serverHasDpms =
        run({"xset", "q"}).find("Server does not have the DPMS Extension") == std::string::npos;
    EXPECT_EQ(displays->available(), serverHasDpms);
    if (serverHasDpms) {
        EXPECT_TRUE(displays->sleepNow().started);
        EXPECT_NE(run({"xset", "q"}).find("Monitor is Off"), std::string::npos);
        displays->wake();
        EXPECT_NE(run({"xset", "q"}).find("Monitor is On"), std::string::npos);
    } else {
        // The dummy driver has no power management.
        const PowerRequest refused = displays->sleepNow();
        EXPECT_FALSE(refused.started);
        EXPECT_EQ(refused.error, "x11: the display server has no DPMS");
    }
#ifdef LUMORA_TEST_XSS
    // The screen saver counts idle time from the last input; waking counts as input.
    run({"xdotool", "mousemove", "10", "10"});
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    XScreenSaverInfo* info = XScreenSaverAllocInfo();
    XScreenSaverQueryInfo(witness->display(), DefaultRootWindow(witness->display()), info);
    EXPECT_GE(info->idle, 350u);
    displays->wake();
    XScreenSaverQueryInfo(witness->display(), DefaultRootWindow(witness->display()), info);
    EXPECT_LT(info->idle, 200u);
    XFree(info);
#endif
}

}  // namespace
}  // namespace lumora::lx
