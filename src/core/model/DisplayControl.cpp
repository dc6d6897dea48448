// The model's operations on displays: DDC discovery and debounced writes, one brightness
// control over three paths, software colour, HiDPI, and naming displays.
#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "base/Check.h"
#include "ddc/DDC.h"
#include "model/AppModel.h"
#include "model/CaseFold.h"
#include "model/CommandArguments.h"

namespace lumora {

namespace {

// The rescan reads only these, to keep the reconfiguration path short.
constexpr VCP kRescanCodes[] = {VCP::brightness, VCP::contrast, VCP::volume};
constexpr double kNoDdcBrightness = 0.5;  // a DDC display whose brightness read failed

std::string hexByte(std::uint8_t byte) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string out;
    if (byte >= 0x10) out.push_back(kDigits[byte >> 4]);
    out.push_back(kDigits[byte & 0x0F]);
    return out;
}

std::string asciiLower(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

}  // namespace

void AppModel::rescanDDC() {
    std::vector<DisplayID> candidates;
    for (DisplayID id : ports_.displays.onlineIDs()) {
        if (!ports_.displayServer.isBuiltin(id) && !ports_.displays.isVirtual(id)) {
            candidates.push_back(id);
        }
    }
    AVServices& av = ports_.avServices;
    const DisplayServer& server = ports_.displayServer;
    Scheduler& scheduler = ports_.scheduler;
    ddcQueue_->post([weak = weak_from_this(), candidates, &av, &server, &scheduler] {
        auto services = DDC::services(av, server, scheduler, candidates);
        DdcValues values;
        for (const auto& [id, service] : services) {
            auto& entry = values[id];  // every service gets one, even an empty one
            for (VCP vcp : kRescanCodes) {
                auto reply = service->read(code(vcp));
                if (!reply || reply->second == 0) continue;
                entry[code(vcp)] = static_cast<double>(reply->first) / reply->second;
            }
        }
        scheduler.mainQueue().post(
            [weak, services = std::move(services), values = std::move(values)]() mutable {
                if (auto self = weak.lock())
                    self->publishDdc(std::move(services), std::move(values));
            });
    });
}

void AppModel::publishDdc(std::map<DisplayID, std::shared_ptr<DDCService>> services,
                          DdcValues values) {
    ddc_ = std::move(services);
    std::set<DisplayID> answering;
    for (const auto& [id, codes] : values) {
        if (!codes.empty()) answering.insert(id);
    }
    const std::size_t answeringCount = answering.size();
    ddcAvailable_.set(std::move(answering));
    ddcValues_.set(std::move(values));
    ports_.log.write("DDC: " + std::to_string(ddc_.size()) +
                     " external display(s) with a DDC channel, " + std::to_string(answeringCount) +
                     " answering");
}

void AppModel::setDDC(DisplayID display, VCP vcp, double value, std::uint16_t max) {
    const std::uint8_t byte = code(vcp);
    ddcValues_.modify([&](DdcValues& values) { values[display][byte] = value; });
    auto service = ddc_.find(display);
    if (service == ddc_.end()) return;

    const std::string key = std::to_string(display) + "-" + std::to_string(byte);
    auto pending = pendingDDC_.find(key);
    if (pending != pendingDDC_.end()) pending->second->cancel();

    const double raw = std::round(value * max);  // halves away from zero
    check(raw >= 0 && raw <= std::numeric_limits<std::uint16_t>::max(),
          "DDC value outside 0...1 (callers clamp)");
    auto write = [channel = service->second, byte, raw = static_cast<std::uint16_t>(raw)] {
        channel->write(byte, raw);
    };
    // Replaced, never removed: the map holds at most one entry per display and control.
    pendingDDC_.insert_or_assign(key, ddcQueue_->postAfter(kDdcDebounce, std::move(write)));
}

void AppModel::sendDDC(DisplayID display, VCP vcp, std::uint16_t raw) {
    auto service = ddc_.find(display);
    if (service == ddc_.end()) return;
    const std::uint8_t byte = code(vcp);
    ddcQueue_->post([channel = service->second, byte, raw] { channel->write(byte, raw); });
    ports_.log.write("DDC display " + std::to_string(display) + ": VCP 0x" + hexByte(byte) + " = " +
                     std::to_string(raw));
}

double AppModel::brightnessLevel(DisplayID display) const {
    if (ports_.displayServer.isBuiltin(display)) return builtinBrightness_.get();
    if (ddcAvailable_->contains(display)) {
        auto values = ddcValues_->find(display);
        if (values == ddcValues_->end()) return kNoDdcBrightness;
        auto level = values->second.find(code(VCP::brightness));
        return level == values->second.end() ? kNoDdcBrightness : level->second;
    }
    auto adjust = color_->find(display);
    return adjust == color_->end() ? ColorAdjust{}.dim : adjust->second.dim;
}

void AppModel::setBrightness(DisplayID display, double level) {
    level = std::isnan(level) ? 0.0 : std::clamp(level, 0.0, 1.0);
    if (ports_.displayServer.isBuiltin(display)) {
        setBuiltinBrightness(level);
    } else if (ddcAvailable_->contains(display)) {
        setDDC(display, VCP::brightness, level, kDdcBrightnessMax);
    } else {
        auto found = color_->find(display);
        ColorAdjust adjust = found == color_->end() ? ColorAdjust{} : found->second;
        adjust.dim = std::max(level, kSoftwareDimFloor);
        setColor(display, adjust);
    }
}

void AppModel::stepBrightness(DisplayID display, bool up, bool fine) {
    const double step = fine ? kFineStep : kStep;
    // Snapped to the grid first, so steps land on exact multiples after a slider's odd value.
    const double snapped = step * std::round(brightnessLevel(display) / step);
    const double level = std::clamp(snapped + (up ? step : -step), 0.0, 1.0);
    setBrightness(display, level);
    showLevel(display, level);
}

void AppModel::showLevel(DisplayID display, double level) {
    ports_.osd.show(display, level, level < kDimSymbolBelow ? "sun.min.fill" : "sun.max.fill",
                    std::nullopt);
}

std::optional<DisplayID> AppModel::builtinInList() const {
    for (const DisplayInfo& d : displays_.get()) {
        if (d.isBuiltin) return d.id;
    }
    return std::nullopt;
}

void AppModel::setBuiltinBrightness(double level) {
    level = std::isnan(level) ? 0.0 : std::clamp(level, 0.0, 1.0);
    // The panel in the list, else the one remembered from earlier runs.
    DisplayID id = ports_.displays.builtinID();
    for (const DisplayInfo& d : displays_.get()) {
        if (d.isBuiltin && d.isOnline) {
            id = d.id;
            break;
        }
    }
    if (id != 0) brightness_.setBuiltin(id, static_cast<float>(level));
    builtinBrightness_.set(level);
}

void AppModel::setColor(DisplayID display, const ColorAdjust& adjust) {
    color_.modify([&](ColorMap& color) { color[display] = adjust; });
    applyColor();
    saveColorAdjust(ports_.defaults, color_.get());
}

void AppModel::applyColor() {
    // The tables are rebuilt as a set, so every online display is applied together.
    ColorMap online;
    for (DisplayID id : ports_.displays.onlineIDs()) {
        if (auto found = color_->find(id); found != color_->end()) online.insert(*found);
    }
    gamma_.applyAll(online);
}

void AppModel::dimToBlack(DisplayID display) {
    auto found = color_->find(display);
    ColorAdjust adjust = found == color_->end() ? ColorAdjust{} : found->second;
    if (auto saved = savedDim_.find(display); saved != savedDim_.end()) {
        adjust.dim = saved->second;
        savedDim_.erase(saved);
    } else {
        savedDim_[display] = adjust.dim;
        adjust.dim = 0.0;  // black: past the floor of the brightness control
    }
    setColor(display, adjust);
    ports_.osd.show(display, adjust.dim, adjust.dim == 0.0 ? "moon.fill" : "sun.max.fill",
                    std::nullopt);
}

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

std::optional<DisplayID> AppModel::displayUnderCursor() const {
    const Point pointer = ports_.displayServer.pointerLocation();
    for (const Screen& screen : ports_.displayServer.screens()) {
        if (!screen.frame.contains(pointer)) continue;
        if (!screen.displayID) return std::nullopt;
        // A monitor in HiDPI shows through its backing display: name the monitor.
        for (const auto& [monitor, backing] : hidpi_.virtualByExternal()) {
            if (backing == *screen.displayID) return monitor;
        }
        return screen.displayID;
    }
    return std::nullopt;
}

std::optional<DisplayID> AppModel::resolve(std::optional<std::string_view> argument) const {
    if (!argument || argument->empty()) return displayUnderCursor();
    const std::string word = asciiLower(*argument);
    if (word == "cursor") return displayUnderCursor();
    if (word == "main") {
        const DisplayID main = ports_.displayServer.mainDisplay();
        return main == 0 ? std::nullopt : std::optional<DisplayID>(main);
    }
    if (word == "builtin") return builtinInList();
    if (auto id = parseUnsigned(*argument, std::numeric_limits<DisplayID>::max())) {
        return static_cast<DisplayID>(*id);  // taken as it is, whether or not it exists
    }
    for (const DisplayInfo& d : displays_.get()) {
        if (containsIgnoringCase(d.name, *argument)) return d.id;
    }
    return std::nullopt;
}

}  // namespace lumora
