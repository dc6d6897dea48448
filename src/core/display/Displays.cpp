#include "display/Displays.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace lumora {

namespace {

// Whole degrees toward zero; a value that is no whole number of any size counts as 0.
std::int64_t wholeDegrees(double rotation) {
    // 2^63 exactly: the first double past the signed 64-bit range.
    constexpr double kPastInt64 = 9223372036854775808.0;
    if (!std::isfinite(rotation)) return 0;
    const double whole = std::trunc(rotation);
    if (whole >= kPastInt64 || whole < -kPastInt64) return 0;
    return static_cast<std::int64_t>(whole);
}

// Digits only: no sign, no blanks, nothing past the 32-bit range.
std::optional<DisplayID> parseDisplayID(const std::string& text) {
    DisplayID value = 0;
    const char* end = text.data() + text.size();
    auto [ptr, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || ptr != end) return std::nullopt;
    return value;
}

bool builtinFirst(const DisplayInfo& a, const DisplayInfo& b) {
    if (a.isBuiltin != b.isBuiltin) return a.isBuiltin;
    return a.id < b.id;
}

}  // namespace

Displays::Displays(DisplayServer& server, Defaults& defaults, Log& log)
    : server_(server), defaults_(defaults), log_(log) {
    loadBuiltinID();
    loadDisconnected();
}

void Displays::loadBuiltinID() {
    const auto stored = defaults_.integer(kBuiltinIDKey);
    if (stored && *stored >= 0 && *stored <= std::numeric_limits<DisplayID>::max()) {
        builtinID_ = static_cast<DisplayID>(*stored);
    }
}

void Displays::loadDisconnected() {
    const auto stored = defaults_.stringDictionary(kDisconnectedKey);
    if (!stored) return;
    for (const auto& [key, name] : *stored) {
        if (auto id = parseDisplayID(key)) disconnected_.emplace(*id, name);
    }
}

void Displays::saveDisconnected() {
    std::map<std::string, std::string> stored;
    for (const auto& [id, name] : disconnected_)
        stored.emplace(std::to_string(id), name);
    defaults_.setStringDictionary(kDisconnectedKey, stored);
}

std::vector<DisplayID> Displays::onlineIDs() const {
    return server_.onlineIDs();
}

std::string Displays::name(DisplayID id) {
    return nameAmong(id, server_.screens());
}

std::string Displays::nameAmong(DisplayID id, const std::vector<Screen>& screens) {
    for (const auto& screen : screens) {
        // A screen without a name says nothing about the display; the chain below does better.
        if (screen.displayID == id && !screen.localizedName.empty()) {
            names_[id] = screen.localizedName;
            return screen.localizedName;
        }
    }
    if (auto cached = names_.find(id); cached != names_.end()) return cached->second;
    if (auto stored = disconnected_.find(id); stored != disconnected_.end()) {
        return stored->second;
    }
    if (server_.isBuiltin(id)) return kBuiltinName;
    return "Display " + std::to_string(id);
}

std::vector<DisplayInfo> Displays::list() {
    const DisplayID mainID = server_.mainDisplay();
    const std::vector<DisplayID> online = onlineIDs();
    // One screen query for the whole list rather than one per display.
    const std::vector<Screen> screens = server_.screens();

    std::vector<DisplayInfo> infos;
    infos.reserve(online.size() + disconnected_.size() + 1);
    for (DisplayID id : online) {
        DisplayInfo info;
        info.id = id;
        info.name = nameAmong(id, screens);
        info.isBuiltin = server_.isBuiltin(id);
        info.isMain = id == mainID;
        info.vendor = server_.vendor(id);
        info.isVirtual = isVirtual(id, info.vendor);
        info.isOnline = true;
        info.isAsleep = server_.isAsleep(id);
        info.mode = currentMode(id);
        info.rotation = wholeDegrees(server_.rotation(id));
        info.model = server_.model(id);
        info.serial = server_.serial(id);
        infos.push_back(std::move(info));
    }

    auto isOnline = [&online](DisplayID id) {
        return std::find(online.begin(), online.end(), id) != online.end();
    };
    for (const auto& [id, storedName] : disconnected_) {
        if (isOnline(id)) continue;
        DisplayInfo info;
        info.id = id;
        info.name = storedName;
        info.isBuiltin = id == builtinID_;
        info.isAsleep = true;
        infos.push_back(std::move(info));
    }
    if (builtinID_ != 0 && !isOnline(builtinID_) && !disconnected_.contains(builtinID_)) {
        DisplayInfo info;
        info.id = builtinID_;
        info.name = kBuiltinName;
        info.isBuiltin = true;
        info.isAsleep = true;
        infos.push_back(std::move(info));
    }

    std::stable_sort(infos.begin(), infos.end(), builtinFirst);
    return infos;
}

std::optional<DisplayMode> Displays::currentMode(DisplayID id) const {
    auto mode = server_.currentMode(id);
    if (!mode) return std::nullopt;
    return DisplayMode::from(*mode);
}

std::vector<DisplayMode> Displays::modes(DisplayID id) const {
    return selectableModes(server_.allModes(id));
}

bool Displays::isVirtual(DisplayID id) const {
    return isVirtual(id, server_.vendor(id));
}

bool Displays::isVirtual(DisplayID id, std::uint32_t vendor) const {
    return vendor == kVirtualVendor || virtualIDs_.contains(id);
}

bool Displays::isBuiltin(DisplayID id) const {
    return server_.isBuiltin(id);
}

Displays::Snapshot Displays::snapshot() {
    Snapshot snap;
    for (DisplayID id : onlineIDs()) {
        if (server_.isBuiltin(id)) {
            if (id != builtinID_) {
                builtinID_ = id;
                defaults_.setInteger(kBuiltinIDKey, id);
            }
            snap.builtinAsleep = server_.isAsleep(id);
            snap.builtinOnline = true;
        } else if (!isVirtual(id)) {
            ++snap.externals;
        }
    }
    return snap;
}

}  // namespace lumora
