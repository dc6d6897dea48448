// The URL command interface: lumora://<command>?<name>=<value>&... Every command ends by
// rewriting the status file, so a script reads back what happened.
#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "model/AppModel.h"
#include "model/CommandArguments.h"

namespace lumora {

namespace {

// A requested refresh rate matches a mode's within this many hertz (so 60 finds 59.94).
constexpr double kRefreshTolerance = 1.0;
// User-created virtual screens always run at this rate.
constexpr double kVirtualRefresh = 60.0;
constexpr const char* kMultiplicationSign = "\u00D7";

std::optional<std::string_view> item(const Query& query, std::string_view name) {
    const std::string* text = queryItem(query, name);
    return text ? std::optional<std::string_view>(*text) : std::nullopt;
}

std::optional<std::int64_t> integerItem(const Query& query, std::string_view name) {
    const std::string* text = queryItem(query, name);
    return text ? parseInteger(*text) : std::nullopt;
}

}  // namespace

void AppModel::handleURL(std::string_view url) {
    auto command = parseCommandUrl(url);
    if (!command) return;
    ports_.log.write("url: " + escapeForLog(command->command) + " " + printQuery(command->query));
    handle(command->command, command->query);
}

void AppModel::handle(const std::string& command, const Query& query) {
    refresh();  // names and states current before resolving
    const std::optional<bool> on = onArgument(query);
    const std::optional<double> value = levelArgument(query);
    const auto display = [&] { return resolve(item(query, "display")); };

    if (command == "hidpi") {
        if (auto id = display()) setHiDPI(*id, on.value_or(!hidpi_.isOn(*id)));
    } else if (command == "brightness") {
        auto id = display();
        if (id && value) {
            setBrightness(*id, *value);
            // The bar cannot show less than empty or more than full.
            ports_.osd.show(*id, std::clamp(*value, 0.0, 1.0), "sun.max.fill", std::nullopt);
        }
    } else if (command == "brightness-up" || command == "brightness-down") {
        if (auto id = display()) stepBrightness(*id, command == "brightness-up", /*fine=*/false);
    } else if (command == "connect") {
        if (auto id = display()) {
            ports_.displays.setEnabled(*id, on.value_or(true), /*quiet=*/false);
            refresh();
        }
    } else if (command == "disconnect") {
        if (auto id = display()) {
            ports_.displays.setEnabled(*id, false, /*quiet=*/false);
            refresh();
        }
    } else if (command == "main") {
        if (auto id = display()) {
            ports_.displays.setMain(hidpi_.virtualFor(*id).value_or(*id));
            refresh();
        }
    } else if (command == "mode") {
        handleMode(query);
        return;  // writes the status itself, or deliberately not at all
    } else if (command == "dim") {
        if (auto id = display()) {
            auto found = color_->find(*id);
            ColorAdjust adjust = found == color_->end() ? ColorAdjust{} : found->second;
            // No floor here: an absent value means black.
            adjust.dim = std::clamp(value.value_or(0.0), 0.0, 1.0);
            setColor(*id, adjust);
        }
    } else if (command == "ddc") {
        handleDdc(display(), query);
    } else if (command == "sleep-displays") {
        perform(ShortcutAction::sleepDisplays);
    } else if (command == "virtual") {
        handleVirtual(query);
    } else if (command == "status") {
        // The status write below is all.
    } else {
        ports_.log.write("url: unknown command " + escapeForLog(command));
    }
    writeStatus();
}

void AppModel::handleMode(const Query& query) {
    const auto id = resolve(item(query, "display"));
    const auto width = integerItem(query, "width");
    const auto height = integerItem(query, "height");
    // The one path that leaves the status file as it is.
    if (!id || !width || !height) return;

    std::optional<bool> hidpi;
    if (auto text = item(query, "hidpi")) hidpi = *text == "1" || *text == "true";
    std::optional<double> hz;
    if (auto text = item(query, "hz")) hz = parseNumber(*text);

    const DisplayID target = hidpi_.virtualFor(*id).value_or(*id);
    for (const DisplayMode& mode : ports_.displays.modes(target)) {
        if (mode.width != *width || mode.height != *height) continue;
        if (hidpi && mode.hiDPI() != *hidpi) continue;
        if (hz && !(std::abs(mode.refresh - *hz) < kRefreshTolerance)) continue;
        ports_.displays.setMode(target, mode);
        refresh();
        break;
    }
    writeStatus();
}

void AppModel::handleVirtual(const Query& query) {
    constexpr auto kLargest = std::numeric_limits<std::uint32_t>::max();
    const std::string* widthText = queryItem(query, "width");
    const std::string* heightText = queryItem(query, "height");
    auto width = widthText ? parseInteger(*widthText) : std::nullopt;
    auto height = heightText ? parseInteger(*heightText) : std::nullopt;
    // The platform takes 32-bit unsigned sides.
    if (!width || !height || *width < 0 || *height < 0 || *width > kLargest || *height > kLargest) {
        return;
    }
    const std::string* name = queryItem(query, "name");
    const std::string title =
        name ? *name
             : "Lumora " + std::to_string(*width) + kMultiplicationSign + std::to_string(*height);
    const std::string* hidpi = queryItem(query, "hidpi");
    virtualScreens_.add(title, *width, *height, kVirtualRefresh, !hidpi || *hidpi != "0");
    virtualConfigs_.set(virtualScreens_.configs());
    scheduleRefresh(/*rescan=*/false);
}

void AppModel::handleDdc(std::optional<DisplayID> display, const Query& query) {
    const std::string* vcpText = queryItem(query, "vcp");
    const std::string* valueText = queryItem(query, "value");
    if (!display || !vcpText || !valueText) return;
    auto byte = parseHexByte(*vcpText);
    auto raw = parseUnsigned(*valueText, std::numeric_limits<std::uint16_t>::max());
    if (!byte || !raw) return;
    auto vcp = vcpFromCode(*byte);
    if (!vcp) return;
    sendDDC(*display, *vcp, static_cast<std::uint16_t>(*raw));
}

}  // namespace lumora
