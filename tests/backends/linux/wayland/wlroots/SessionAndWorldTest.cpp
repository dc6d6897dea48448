#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "wayland/common/DisplayWorld.h"
#include "wayland/common/WaylandSession.h"

namespace lumora::wl {
namespace {

TEST(WaylandSessionProbe, AdvertisementsThenBusThenDesktop) {
    const std::vector<std::string> wlroots{"wl_compositor", "zwlr_output_manager_v1"};
    const std::vector<std::string> mutter{"wl_compositor", "gtk_shell1"};
    const std::vector<std::string> kde{"wl_compositor", "kde_output_device_v2"};
    const std::vector<std::string> mutterBus{"org.freedesktop.DBus",
                                             "org.gnome.Mutter.DisplayConfig"};
    struct Case {
        SessionEnvironment env;
        WaylandSession expected;
    };
    const std::vector<Case> cases = {
        {{"", "GNOME", mutter, mutterBus}, WaylandSession::none},
        {{"wayland-0", "GNOME", mutter, mutterBus}, WaylandSession::gnome},
        {{"wayland-0", "", {}, mutterBus}, WaylandSession::other},  // no proof it is Mutter
        {{"wayland-0", "ubuntu:GNOME", {}, mutterBus}, WaylandSession::gnome},
        {{"wayland-0", "GNOME-Flashback", {}, mutterBus}, WaylandSession::other},
        {{"wayland-1", "GNOME", wlroots, mutterBus}, WaylandSession::wlroots},  // sway nested
        {{"wayland-0", "GNOME", mutter, {}}, WaylandSession::other},  // DisplayConfig absent
        {{"wayland-0", "KDE", kde, {"org.kde.KWin"}}, WaylandSession::other},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(detectWaylandSession(c.env), c.expected)
            << c.env.waylandDisplay << " / " << c.env.currentDesktop << " / "
            << c.env.globals.size() << " globals → " << sessionName(c.expected);
    }
}

TEST(DisplayWorldDiff, OneEventPerDisplayNewOrderFirst) {
    const DisplayWorld before{
        {1, "DP-1 1920x1080 0,0"}, {2, "DP-2 1920x1080 1920,0"}, {3, "DP-3 1280x720 3840,0"}};
    const DisplayWorld after{
        {4, "HDMI-1 1024x768 0,0"}, {2, "DP-2 1920x1080 0,0"}, {3, "DP-3 1280x720 3840,0"}};
    using C = DisplayChange;
    EXPECT_EQ(diffWorlds(before, after), (std::vector<std::pair<DisplayID, C>>{
                                             {4, C::added}, {2, C::changed}, {1, C::removed}}));
    EXPECT_TRUE(diffWorlds(before, before).empty());
}

TEST(DisplayWorldDiff, HandlersHearEveryChangeUntilRemoved) {
    ReconfigurationHandlers handlers;
    std::vector<std::string> heard;
    const int a = handlers.add(
        [&](DisplayID id, DisplayChange) { heard.push_back("a" + std::to_string(id)); });
    handlers.add([&](DisplayID id, DisplayChange) { heard.push_back("b" + std::to_string(id)); });
    handlers.deliver({{1, DisplayChange::added}, {2, DisplayChange::removed}});
    handlers.remove(a);
    handlers.deliver({{3, DisplayChange::changed}});
    EXPECT_EQ(heard, (std::vector<std::string>{"a1", "b1", "a2", "b2", "b3"}));
}

TEST(ModeHandlesTable, StablePerDisplayAndNeverZero) {
    ModeHandles handles;
    const auto h1 = handles.handle(7, "1920x1080@60.000");
    const auto h2 = handles.handle(7, "1280x720@60.000");
    EXPECT_EQ(handles.handle(7, "1920x1080@60.000"), h1);
    EXPECT_NE(h1, h2);
    EXPECT_NE(h1, 0);
    EXPECT_EQ(handles.key(7, h2), "1280x720@60.000");
    EXPECT_EQ(handles.key(8, h2), std::nullopt);  // another display's handle
    EXPECT_EQ(handles.key(7, 99), std::nullopt);
}

}  // namespace
}  // namespace lumora::wl
