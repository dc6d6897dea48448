#include "edid/StableDisplayID.h"

#include <string_view>
#include <unordered_set>

namespace lumora::lx {

namespace {

// FNV-1a: small, well spread and fixed forever, so identifiers survive upgrades.
constexpr std::uint32_t kFnvOffset = 2166136261u;
constexpr std::uint32_t kFnvPrime = 16777619u;

DisplayID hash(std::string_view text) {
    std::uint32_t h = kFnvOffset;
    for (char c : text) {
        h ^= static_cast<std::uint8_t>(c);
        h *= kFnvPrime;
    }
    return h;
}

std::string identityKey(const OutputIdentity& output) {
    if (!output.edid) return "connector:" + output.connector;
    const EdidInfo& e = *output.edid;
    std::string key = "edid:" + std::to_string(e.vendor) + "-" + std::to_string(e.product) + "-" +
                      std::to_string(e.serial);
    if (e.serialText) key += "-" + *e.serialText;
    return key;
}

// Salts the key until the identifier is non-zero and unused.
DisplayID firstFree(const std::string& key, const std::unordered_set<DisplayID>& taken) {
    DisplayID id = hash(key);
    for (unsigned salt = 1; id == 0 || taken.contains(id); ++salt)
        id = hash(key + "#" + std::to_string(salt));
    return id;
}

}  // namespace

DisplayID stableDisplayID(const OutputIdentity& output) {
    return firstFree(identityKey(output), {});
}

std::vector<DisplayID> stableDisplayIDs(std::span<const OutputIdentity> outputs) {
    std::vector<DisplayID> ids;
    std::unordered_set<DisplayID> taken;
    for (const auto& output : outputs) {
        DisplayID id = stableDisplayID(output);
        if (taken.contains(id)) id = firstFree(identityKey(output) + "@" + output.connector, taken);
        taken.insert(id);
        ids.push_back(id);
    }
    return ids;
}

}  // namespace lumora::lx
