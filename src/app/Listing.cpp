#include "Listing.h"

#include <cmath>
#include <ostream>
#include <string>
#include <vector>

#include "ddc/DDC.h"
#include "ddc/DdcCapabilities.h"
#include "ddc/VCP.h"
#include "display/Brightness.h"
#include "display/Displays.h"

namespace lumora::app {

namespace {

using nlohmann::json;

// Read at start-up by the model too: the three controls the panel shows for every monitor.
constexpr VCP kListedControls[] = {VCP::brightness, VCP::contrast, VCP::volume};
// Backlight levels are floats: four decimals keep 0.8 from reading 0.800000011920929.
constexpr double kLevelScale = 10'000.0;
constexpr double kPercent = 100.0;

struct CapabilityName {
    bool Capabilities::*has;
    const char* key;   // in the JSON document
    const char* text;  // in the listing for people
};

constexpr CapabilityName kCapabilities[] = {
    {&Capabilities::setMode, "setMode", "modes"},
    {&Capabilities::setMain, "setMain", "main display"},
    {&Capabilities::mirror, "mirror", "mirroring"},
    {&Capabilities::enableDisable, "enableDisable", "switching off"},
    {&Capabilities::gamma, "gamma", "software dimming"},
    {&Capabilities::virtualDisplays, "virtualDisplays", "virtual displays"},
    {&Capabilities::globalKeys, "globalKeys", "shortcuts"},
    {&Capabilities::brightnessKeyTap, "brightnessKeyTap", "brightness keys"},
    {&Capabilities::pointer, "pointer", "pointer"},
    {&Capabilities::lidAngle, "lidAngle", "lid angle"},
    {&Capabilities::lidSwitch, "lidSwitch", "lid switch"},
    {&Capabilities::backlight, "backlight", "backlight"},
    {&Capabilities::ddc, "ddc", "DDC/CI"},
    {&Capabilities::displaySleep, "displaySleep", "display sleep"},
    {&Capabilities::systemSleep, "systemSleep", "system sleep"},
    {&Capabilities::idleInhibit, "idleInhibit", "idle inhibit"},
    {&Capabilities::ambientLight, "ambientLight", "light sensor"},
};

json modeJson(const DisplayMode& m) {
    return {{"id", m.id},
            {"width", m.width},
            {"height", m.height},
            {"pixelWidth", m.pixelWidth},
            {"pixelHeight", m.pixelHeight},
            {"refresh", m.refresh},
            {"hidpi", m.hiDPI()},
            {"label", m.label()}};
}

// "ddc": each listed control's value, null when the monitor gave none; "ddcMissing": why, for
// each of those.
std::pair<json, json> ddcJson(DDCService& service) {
    json controls = json::object();
    json missing = json::object();
    for (VCP control : kListedControls) {
        const DdcReading reading = service.readFeature(code(control));
        const std::string key(name(control));
        if (reading.status == DdcReading::Status::ok) {
            controls[key] = json{{"value", reading.current}, {"max", reading.maximum}};
        } else {
            controls[key] = nullptr;
            missing[key] = describe(reading);
        }
    }
    return {std::move(controls), std::move(missing)};
}

// "0x0f": always two digits, as MCCS writes codes and values.
std::string hexByte(std::uint8_t byte) {
    static constexpr char kDigits[] = "0123456789abcdef";
    return {'0', 'x', kDigits[byte >> 4], kDigits[byte & 0x0F]};
}

// "ddcCapabilities": what the monitor's capabilities string lists; null without one.
json capabilitiesJson(DDCService& service) {
    const auto text = service.readCapabilities();
    const auto parsed = text ? parseCapabilities(*text) : std::nullopt;
    if (!parsed) return nullptr;
    json vcp = json::object();
    for (const auto& [code, values] : parsed->vcp) {
        json listed = json::array();
        for (std::uint8_t value : values)
            listed.push_back(hexByte(value));
        vcp[hexByte(code)] = std::move(listed);
    }
    return {{"model", parsed->model}, {"mccs", parsed->mccs}, {"vcp", std::move(vcp)}};
}

std::string roles(const json& d) {
    std::vector<std::string> words;
    words.emplace_back(d["builtin"].get<bool>() ? "built-in" : "external");
    if (d["main"].get<bool>()) words.emplace_back("main");
    if (d["virtual"].get<bool>()) words.emplace_back("virtual");
    words.emplace_back(d["online"].get<bool>() ? "online" : "offline");
    if (d["asleep"].get<bool>()) words.emplace_back("asleep");
    std::string out;
    for (const auto& w : words)
        out += (out.empty() ? "" : ", ") + w;
    return out;
}

std::string capabilityList(const json& capabilities) {
    std::string out;
    for (const CapabilityName& c : kCapabilities) {
        if (capabilities.value(c.key, false))
            out += (out.empty() ? "" : ", ") + std::string(c.text);
    }
    return out.empty() ? "none" : out;
}

void printDisplay(std::ostream& out, const json& d) {
    out << "\ndisplay " << d["id"] << " \"" << d["name"].get<std::string>() << "\" (" << roles(d)
        << ")\n";
    out << "  vendor " << d["vendor"] << ", model " << d["model"] << ", serial " << d["serial"]
        << ", rotation " << d["rotation"] << "\n";
    const json& current = d["mode"];
    out << "  mode: " << (current.is_null() ? "none" : current["label"].get<std::string>()) << "\n";
    const bool online = d["online"].get<bool>();
    if (online) {
        out << "  modes (" << d["modes"].size() << "):\n";
        for (const json& m : d["modes"]) {
            // The mode number and exact refresh tell apart modes whose labels agree.
            const bool isCurrent = !current.is_null() && current["id"] == m["id"];
            out << "    " << (isCurrent ? "* " : "  ") << m["label"].get<std::string>()
                << "  [mode " << m["id"] << ", " << m["pixelWidth"] << "×" << m["pixelHeight"]
                << " px, " << m["refresh"].get<double>() << " Hz]\n";
        }
    }
    const bool builtin = d["builtin"].get<bool>();
    if (builtin && online) {
        if (d["backlight"].is_null()) {
            out << "  backlight: not readable\n";
        } else {
            out << "  backlight: " << std::lround(d["backlight"].get<double>() * kPercent)
                << " %\n";
        }
    }
    if (builtin || d["virtual"].get<bool>() || !online) return;
    if (d["ddc"].is_null()) {
        out << "  DDC/CI: no channel\n";
        return;
    }
    out << "  DDC/CI:";
    for (VCP control : kListedControls) {
        const json& value = d["ddc"][std::string(name(control))];
        out << " " << name(control) << " ";
        if (value.is_null()) {
            out << "(" << d["ddcMissing"].value(std::string(name(control)), "no answer") << ")";
        } else {
            out << value["value"] << "/" << value["max"];
        }
    }
    out << "\n";
    const json& caps = d["ddcCapabilities"];
    if (caps.is_null()) {
        out << "  capabilities: none\n";
        return;
    }
    out << "  capabilities: model \"" << caps["model"].get<std::string>() << "\", MCCS "
        << (caps["mccs"].get<std::string>().empty() ? "?" : caps["mccs"].get<std::string>())
        << ", VCP";
    for (const auto& [code, values] : caps["vcp"].items()) {
        out << " " << code.substr(2);
        if (values.empty()) continue;
        out << "(";
        for (std::size_t i = 0; i < values.size(); ++i)
            out << (i ? " " : "") << values[i].get<std::string>().substr(2);
        out << ")";
    }
    out << "\n";
}

}  // namespace

json listing(Platform& platform, Displays& displays, Brightness& brightness, Sleeper& sleeper) {
    const auto list = displays.list();
    std::vector<DisplayID> candidates;
    for (const auto& d : list) {
        if (d.isOnline && !d.isBuiltin && !d.isVirtual) candidates.push_back(d.id);
    }
    auto services = DDC::services(platform.avServices(), sleeper,
                                  DDC::targets(platform.displayServer(), candidates));

    json capabilities = json::object();
    const Capabilities can = platform.capabilities();
    for (const CapabilityName& c : kCapabilities)
        capabilities[c.key] = can.*(c.has);

    json all = json::array();
    for (const auto& d : list) {
        json modes = json::array();
        if (d.isOnline) {
            for (const auto& m : displays.modes(d.id))
                modes.push_back(modeJson(m));
        }
        json backlight = nullptr;
        if (d.isBuiltin && d.isOnline) {
            if (auto level = brightness.builtin(d.id)) {
                backlight = std::round(static_cast<double>(*level) * kLevelScale) / kLevelScale;
            }
        }
        json ddc = nullptr;
        json ddcMissing = nullptr;
        json ddcCapabilities = nullptr;
        if (auto it = services.find(d.id); it != services.end()) {
            std::tie(ddc, ddcMissing) = ddcJson(*it->second);
            ddcCapabilities = capabilitiesJson(*it->second);
        }
        all.push_back({{"id", d.id},
                       {"name", d.name},
                       {"builtin", d.isBuiltin},
                       {"main", d.isMain},
                       {"virtual", d.isVirtual},
                       {"online", d.isOnline},
                       {"asleep", d.isAsleep},
                       {"vendor", d.vendor},
                       {"model", d.model},
                       {"serial", d.serial},
                       {"rotation", d.rotation},
                       {"mode", d.mode ? modeJson(*d.mode) : json(nullptr)},
                       {"modes", std::move(modes)},
                       {"backlight", backlight},
                       {"ddc", std::move(ddc)},
                       {"ddcMissing", std::move(ddcMissing)},
                       {"ddcCapabilities", std::move(ddcCapabilities)}});
    }
    return {{"platform", platform.name()},
            {"capabilities", std::move(capabilities)},
            {"displays", std::move(all)}};
}

void printListing(std::ostream& out, const json& listing) {
    out << "can: " << capabilityList(listing["capabilities"]) << "\n";
    out << listing["displays"].size() << " display(s)\n";
    for (const json& d : listing["displays"])
        printDisplay(out, d);
}

}  // namespace lumora::app
