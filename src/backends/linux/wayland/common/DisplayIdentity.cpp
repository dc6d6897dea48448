#include "wayland/common/DisplayIdentity.h"

#include <charconv>
#include <set>

#include "edid/StableDisplayID.h"

namespace lumora::wl {

namespace {

constexpr std::size_t kPnpLetters = 3;
constexpr unsigned kPnpBitsPerLetter = 5;

// FNV-1a, as the EDID identifiers use: small, stable across builds and machines.
constexpr std::uint32_t kFnvOffset = 2166136261u;
constexpr std::uint32_t kFnvPrime = 16777619u;

std::uint32_t fnv1a(const std::string& text) {
    std::uint32_t hash = kFnvOffset;
    for (unsigned char c : text) {
        hash ^= c;
        hash *= kFnvPrime;
    }
    return hash;
}

// "0x10ac" → 0x10AC; anything else (a name, a decimal serial text, garbage) → 0.
std::uint32_t hexNumber(const std::string& text) {
    if (text.size() < 3 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X')) return 0;
    std::uint32_t value = 0;
    const char* begin = text.data() + 2;
    const char* end = text.data() + text.size();
    const auto [ptr, ec] = std::from_chars(begin, end, value, 16);
    return (ec == std::errc() && ptr == end) ? value : 0;
}

bool hasTexts(const MonitorStrings& s) {
    return !s.vendor.empty() || !s.product.empty() || !s.serial.empty();
}

// What names the monitor, port aside.
std::string identityKey(const MonitorIdentity& m) {
    if (m.edid) return "edid";  // the EDID library keys these itself
    const MonitorStrings& s = m.strings;
    if (hasTexts(s)) return "monitor\n" + s.vendor + "\n" + s.product + "\n" + s.serial;
    return "connector";
}

DisplayID plainID(const MonitorIdentity& m) {
    if (m.edid || !hasTexts(m.strings))
        return lx::stableDisplayID(lx::OutputIdentity{m.strings.connector, m.edid});
    const DisplayID id = fnv1a(identityKey(m));
    return id == 0 ? 1 : id;
}

// Salted by the connector until non-zero and unused.
DisplayID freeID(const MonitorIdentity& m, const std::set<DisplayID>& taken) {
    std::string key = identityKey(m) + "@" + m.strings.connector;
    if (m.edid) {
        key += "\n" + std::to_string(m.edid->vendor) + "-" + std::to_string(m.edid->product) + "-" +
               std::to_string(m.edid->serial);
    }
    DisplayID id = fnv1a(key);
    while (id == 0 || taken.count(id) != 0) {
        key += "#";
        id = fnv1a(key);
    }
    return id;
}

}  // namespace

std::uint32_t pnpVendorNumber(const std::string& code) {
    if (code.size() != kPnpLetters) return 0;
    std::uint32_t value = 0;
    for (char c : code) {
        if (c < 'A' || c > 'Z') return 0;
        value = (value << kPnpBitsPerLetter) | static_cast<std::uint32_t>(c - 'A' + 1);
    }
    return value;
}

MonitorNumbers numbersFromStrings(const MonitorStrings& strings) {
    return MonitorNumbers{pnpVendorNumber(strings.vendor), hexNumber(strings.product),
                          hexNumber(strings.serial)};
}

MonitorNumbers MonitorIdentity::numbers() const {
    if (edid) return MonitorNumbers{edid->vendor, edid->product, edid->serial};
    return numbersFromStrings(strings);
}

std::vector<DisplayID> monitorDisplayIDs(const std::vector<MonitorIdentity>& monitors) {
    std::vector<DisplayID> ids;
    std::set<DisplayID> taken;
    for (const auto& m : monitors) {
        DisplayID id = plainID(m);
        if (taken.count(id) != 0) id = freeID(m, taken);
        taken.insert(id);
        ids.push_back(id);
    }
    return ids;
}

std::string persistentKeyOf(const MonitorIdentity& monitor) {
    const MonitorNumbers n = monitor.numbers();
    if (monitor.edid || (n.vendor != 0 && n.product != 0 && n.serial != 0)) {
        return std::to_string(n.vendor) + "-" + std::to_string(n.product) + "-" +
               std::to_string(n.serial);
    }
    const MonitorStrings& s = monitor.strings;
    if (!hasTexts(s)) return "connector:" + s.connector;
    return "monitor:" + s.vendor + "/" + s.product + "/" + s.serial;
}

std::vector<DisplayID> DisplayIDs::assign(const std::vector<MonitorIdentity>& monitors) {
    std::vector<DisplayID> ids(monitors.size(), 0);
    std::vector<std::string> keys;
    std::set<DisplayID> taken;
    for (std::size_t i = 0; i < monitors.size(); ++i) {
        const MonitorIdentity& m = monitors[i];
        std::string key = m.strings.connector + "\n" + identityKey(m);
        if (m.edid) key += "\n" + std::to_string(plainID(m));
        keys.push_back(std::move(key));
        if (const auto known = present_.find(keys.back()); known != present_.end()) {
            ids[i] = known->second;
            taken.insert(ids[i]);
        }
    }
    // Newcomers in order, around the IDs the others keep.
    const std::vector<DisplayID> fresh = monitorDisplayIDs(monitors);
    for (std::size_t i = 0; i < monitors.size(); ++i) {
        if (ids[i] != 0) continue;
        ids[i] = taken.count(fresh[i]) == 0 ? fresh[i] : freeID(monitors[i], taken);
        taken.insert(ids[i]);
    }
    present_.clear();
    for (std::size_t i = 0; i < monitors.size(); ++i)
        present_[keys[i]] = ids[i];
    return ids;
}

}  // namespace lumora::wl
