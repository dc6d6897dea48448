#include "Listing.h"

#include <cmath>
#include <ostream>
#include <string>
#include <vector>

#include "ddc/DDC.h"
#include "ddc/VCP.h"
#include "display/Brightness.h"
#include "display/Displays.h"

namespace lumora::app {

namespace {

// Read at start-up by the model too: the three controls the panel shows for every monitor.
constexpr VCP kListedControls[] = {VCP::brightness, VCP::contrast, VCP::volume};

std::string roles(const DisplayInfo& d) {
    std::vector<std::string> words;
    words.emplace_back(d.isBuiltin ? "built-in" : "external");
    if (d.isMain) words.emplace_back("main");
    if (d.isVirtual) words.emplace_back("virtual");
    words.emplace_back(d.isOnline ? "online" : "offline");
    if (d.isAsleep) words.emplace_back("asleep");
    std::string out;
    for (const auto& w : words)
        out += (out.empty() ? "" : ", ") + w;
    return out;
}

std::string capabilityList(const Capabilities& c) {
    const std::pair<bool, const char*> all[] = {
        {c.setMode, "modes"},
        {c.setMain, "main display"},
        {c.mirror, "mirroring"},
        {c.enableDisable, "switching off"},
        {c.gamma, "software dimming"},
        {c.virtualDisplays, "virtual displays"},
        {c.globalKeys, "shortcuts"},
        {c.brightnessKeyTap, "brightness keys"},
        {c.pointer, "pointer"},
        {c.lidAngle, "lid angle"},
        {c.lidSwitch, "lid switch"},
        {c.backlight, "backlight"},
        {c.ddc, "DDC/CI"},
        {c.displaySleep, "display sleep"},
        {c.systemSleep, "system sleep"},
        {c.idleInhibit, "idle inhibit"},
    };
    std::string out;
    for (const auto& [has, name] : all) {
        if (has) out += (out.empty() ? "" : ", ") + std::string(name);
    }
    return out.empty() ? "none" : out;
}

}  // namespace

void printListing(std::ostream& out, Platform& platform, Displays& displays, Brightness& brightness,
                  Sleeper& sleeper) {
    const auto list = displays.list();
    std::vector<DisplayID> candidates;
    for (const auto& d : list) {
        if (d.isOnline && !d.isBuiltin && !d.isVirtual) candidates.push_back(d.id);
    }
    auto services = DDC::services(platform.avServices(), sleeper,
                                  DDC::targets(platform.displayServer(), candidates));

    out << "can: " << capabilityList(platform.capabilities()) << "\n";
    out << list.size() << " display(s)\n";
    for (const auto& d : list) {
        out << "\ndisplay " << d.id << " \"" << d.name << "\" (" << roles(d) << ")\n";
        out << "  vendor " << d.vendor << ", model " << d.model << ", serial " << d.serial
            << ", rotation " << d.rotation << "\n";
        out << "  mode: " << (d.mode ? d.mode->label() : std::string("none")) << "\n";
        if (d.isOnline) {
            const auto modes = displays.modes(d.id);
            out << "  modes (" << modes.size() << "):\n";
            for (const auto& m : modes) {
                // The mode number and exact refresh tell apart modes whose labels agree.
                out << "    " << (d.mode && d.mode->id == m.id ? "* " : "  ") << m.label()
                    << "  [mode " << m.id << ", " << m.pixelWidth << "×" << m.pixelHeight << " px, "
                    << m.refresh << " Hz]\n";
            }
        }
        if (d.isBuiltin && d.isOnline) {
            if (auto level = brightness.builtin(d.id)) {
                out << "  backlight: " << std::lround(*level * 100.0f) << " %\n";
            } else {
                out << "  backlight: not readable\n";
            }
        }
        if (d.isBuiltin || d.isVirtual || !d.isOnline) continue;
        auto it = services.find(d.id);
        if (it == services.end()) {
            out << "  DDC/CI: no channel\n";
            continue;
        }
        out << "  DDC/CI:";
        for (VCP control : kListedControls) {
            out << " " << name(control) << " ";
            if (auto value = it->second->read(code(control))) {
                out << value->first << "/" << value->second;
            } else {
                out << "no answer";
            }
        }
        out << "\n";
    }
}

}  // namespace lumora::app
