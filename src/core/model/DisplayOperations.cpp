// The model's operations on displays that the interface and the commands share: HiDPI,
// configuration with a refresh after it, virtual screens, and naming displays.
#include <algorithm>
#include <limits>
#include <string>

#include "model/AppModel.h"
#include "model/CaseFold.h"
#include "model/CommandArguments.h"

namespace lumora {

namespace {

std::string asciiLower(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

}  // namespace

void AppModel::setHiDPI(DisplayID display, bool on) {
    if (on) {
        hidpi_.enable(display);
    } else {
        hidpi_.disable(display, /*remember=*/true);
    }
    refresh();
    ports_.scheduler.mainQueue().postAfter(kHiDPISecondRefresh, [weak = weak_from_this()] {
        if (auto self = weak.lock()) self->refresh();
    });
}

DisplayID AppModel::shownDisplay(DisplayID display) const {
    return hidpi_.virtualFor(display).value_or(display);
}

bool AppModel::setMode(DisplayID display, const DisplayMode& mode) {
    const bool ok = ports_.displays.setMode(shownDisplay(display), mode);
    refresh();
    return ok;
}

bool AppModel::setMain(DisplayID display) {
    const bool ok = ports_.displays.setMain(shownDisplay(display));
    refresh();
    return ok;
}

bool AppModel::mirror(DisplayID display, DisplayID target) {
    const bool ok = ports_.displays.mirror(display, target);
    refresh();
    return ok;
}

bool AppModel::setEnabled(DisplayID display, bool enabled) {
    const bool ok = ports_.displays.setEnabled(display, enabled, /*quiet=*/false);
    refresh();
    return ok;
}

void AppModel::addVirtualScreen(const std::string& name, std::int64_t width, std::int64_t height,
                                double refresh, bool hiDPI) {
    virtualScreens_.add(name, width, height, refresh, hiDPI);
    virtualConfigs_.set(virtualScreens_.configs());
    scheduleRefresh(/*rescan=*/false);
}

void AppModel::removeVirtualScreen(std::uint32_t id) {
    virtualScreens_.remove(id);
    virtualConfigs_.set(virtualScreens_.configs());
    scheduleRefresh(/*rescan=*/false);
}

void AppModel::setVirtualScreenEnabled(std::uint32_t id, bool enabled) {
    virtualScreens_.setEnabled(id, enabled);
    virtualConfigs_.set(virtualScreens_.configs());
    scheduleRefresh(/*rescan=*/false);
}

std::optional<DisplayID> AppModel::displayUnderCursor() const {
    const DisplayServer& server = ports_.platform.displayServer();
    // Where the platform does not tell where the pointer is, no display is under it.
    const std::optional<Point> pointer = server.pointerLocation();
    if (!pointer) return std::nullopt;
    for (const Screen& screen : server.screens()) {
        if (!screen.frame.contains(*pointer)) continue;
        if (!screen.displayID) return std::nullopt;
        // A monitor in HiDPI shows through its backing display: name the monitor.
        for (const auto& [monitor, backing] : hidpi_.virtualByExternal()) {
            if (backing == *screen.displayID) return monitor;
        }
        return screen.displayID;
    }
    return std::nullopt;
}

std::optional<DisplayID> AppModel::actionDisplay() const {
    if (ports_.platform.displayServer().pointerLocation()) return displayUnderCursor();
    // The pointer's place is unknown (Wayland): the display chosen last, else the main one.
    const std::vector<DisplayID> online = ports_.displays.onlineIDs();
    if (chosen_ && std::find(online.begin(), online.end(), *chosen_) != online.end()) {
        return chosen_;
    }
    const DisplayID main = ports_.platform.displayServer().mainDisplay();
    return main == 0 ? std::nullopt : std::optional<DisplayID>(main);
}

std::optional<DisplayID> AppModel::resolve(std::optional<std::string_view> argument) const {
    if (!argument || argument->empty()) return actionDisplay();
    const std::string word = asciiLower(*argument);
    if (word == "cursor") return actionDisplay();
    if (word == "main") {
        const DisplayID main = ports_.platform.displayServer().mainDisplay();
        return main == 0 ? std::nullopt : std::optional<DisplayID>(main);
    }
    if (word == "builtin") {
        for (const DisplayInfo& d : displays_.get()) {
            if (d.isBuiltin) return d.id;
        }
        return std::nullopt;
    }
    if (auto id = parseUnsigned(*argument, std::numeric_limits<DisplayID>::max())) {
        return static_cast<DisplayID>(*id);  // taken as it is, whether or not it exists
    }
    for (const DisplayInfo& d : displays_.get()) {
        if (containsIgnoringCase(d.name, *argument)) return d.id;
    }
    return std::nullopt;
}

}  // namespace lumora
