#include <wayland-client.h>

#include "wayland/wlroots/WlrootsDisplayServer.h"

namespace lumora::wl {

namespace {

void collectGlobal(void* data, wl_registry*, std::uint32_t, const char* interface, std::uint32_t) {
    static_cast<std::vector<std::string>*>(data)->emplace_back(interface);
}
void ignoreRemoval(void*, wl_registry*, std::uint32_t) {}

const wl_registry_listener kCollector = {collectGlobal, ignoreRemoval};

}  // namespace

std::vector<std::string> advertisedGlobals(const std::string& display) {
    std::vector<std::string> globals;
    wl_display* connection = wl_display_connect(display.empty() ? nullptr : display.c_str());
    if (!connection) return globals;
    wl_registry* registry = wl_display_get_registry(connection);
    wl_registry_add_listener(registry, &kCollector, &globals);
    if (wl_display_roundtrip(connection) < 0) globals.clear();
    wl_registry_destroy(registry);
    wl_display_disconnect(connection);
    return globals;
}

}  // namespace lumora::wl
