#include "virtual/VirtualScreens.h"

#include <algorithm>
#include <limits>
#include <set>

#include "base/Check.h"

namespace lumora {

namespace {

bool fits32(std::int64_t side) {
    return side >= 0 && side <= std::numeric_limits<std::uint32_t>::max();
}

std::string label(const std::string& name) {
    return "virtual screen '" + name + "'";
}

}  // namespace

VirtualScreens::VirtualScreens(Displays& displays, VirtualDisplays& virtualDisplays,
                               Defaults& defaults, Log& log)
    : displays_(displays), virtualDisplays_(virtualDisplays), defaults_(defaults), log_(log) {
    // A list that does not decode counts as empty and is overwritten by the next save.
    if (auto stored = defaults_.jsonData(kStorageKey)) {
        configs_ =
            VirtualScreenConfig::listFromJson(*stored).value_or(std::vector<VirtualScreenConfig>{});
    }
}

VirtualScreenConfig VirtualScreens::add(const std::string& name, std::int64_t width,
                                        std::int64_t height, double refresh, bool hiDPI) {
    std::uint32_t id = kFirstID;
    if (!configs_.empty()) {
        const auto largest =
            std::max_element(configs_.begin(), configs_.end(),
                             [](const auto& a, const auto& b) { return a.id < b.id; });
        if (largest->id != std::numeric_limits<std::uint32_t>::max()) {
            id = largest->id + 1;
        } else {
            // Only stored data can carry the top id; rather than stop the agent, reuse the
            // lowest free number of our range.
            std::set<std::uint32_t> used;
            for (const auto& c : configs_)
                used.insert(c.id);
            while (used.contains(id)) {
                check(id != std::numeric_limits<std::uint32_t>::max(),
                      "virtual screen ids exhausted");
                ++id;
            }
        }
    }
    VirtualScreenConfig config{id, name, width, height, refresh, hiDPI, true};
    configs_.push_back(config);
    save();
    start(config);
    return config;
}

void VirtualScreens::start(const VirtualScreenConfig& config) {
    if (live_.contains(config.id)) return;
    std::unique_ptr<LMVirtualScreen> screen;
    if (fits32(config.width) && fits32(config.height)) {
        screen = LMVirtualScreen::createConvenience(
            virtualDisplays_, config.name, static_cast<std::uint32_t>(config.width),
            static_cast<std::uint32_t>(config.height), config.refresh, config.hiDPI, config.id);
    }
    if (!screen) {
        log_.write(label(config.name) + " could not be created");
        return;
    }
    const DisplayID displayID = screen->displayID();
    live_.emplace(config.id, std::move(screen));
    log_.write(label(config.name) + " " + std::to_string(config.width) + "\u00D7" +
               std::to_string(config.height) + (config.hiDPI ? " HiDPI" : "") + " on (display " +
               std::to_string(displayID) + ")");
}

void VirtualScreens::setEnabled(std::uint32_t id, bool on) {
    auto config =
        std::find_if(configs_.begin(), configs_.end(), [id](const auto& c) { return c.id == id; });
    if (config == configs_.end()) return;
    config->enabled = on;
    if (on) {
        start(*config);
    } else {
        live_.erase(id);
        log_.write(label(config->name) + " off");
    }
    save();
}

void VirtualScreens::remove(std::uint32_t id) {
    live_.erase(id);
    std::erase_if(configs_, [id](const auto& c) { return c.id == id; });
    save();
}

void VirtualScreens::startEnabled() {
    for (const auto& config : configs_) {
        if (config.enabled) start(config);
    }
    save();
}

void VirtualScreens::stopAll() {
    live_.clear();
}

std::optional<DisplayID> VirtualScreens::displayID(const VirtualScreenConfig& config) const {
    auto found = live_.find(config.id);
    if (found == live_.end()) return std::nullopt;
    return found->second->displayID();
}

bool VirtualScreens::available() const {
    return LMVirtualScreensAvailable(virtualDisplays_);
}

void VirtualScreens::save() {
    defaults_.setJsonData(kStorageKey, VirtualScreenConfig::listToJson(configs_));
    // Replaced, not merged: the ids HiDPI sessions added go too. Their displays still count as
    // virtual through the program's vendor number.
    std::set<DisplayID> ids;
    for (const auto& [id, screen] : live_)
        ids.insert(screen->displayID());
    displays_.setVirtualIDs(std::move(ids));
}

}  // namespace lumora
