#include "platform/DrmConnectors.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

#include "edid/Edid.h"

namespace lumora::lx {

namespace {

// EDIDs are 128 bytes a block; a file far larger than any EDID is not read whole.
constexpr std::streamsize kMaxEdidBytes = 32 * 1024;

std::string firstLine(const std::filesystem::path& file) {
    std::ifstream in(file);
    std::string line;
    std::getline(in, line);
    return line;
}

std::vector<std::uint8_t> readBytes(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::vector<std::uint8_t> bytes;
    char c = 0;
    while (static_cast<std::streamsize>(bytes.size()) < kMaxEdidBytes && in.get(c))
        bytes.push_back(static_cast<std::uint8_t>(c));
    return bytes;
}

}  // namespace

std::vector<DrmConnector> readDrmConnectors(const std::filesystem::path& sysfsRoot) {
    std::vector<DrmConnector> connectors;
    std::error_code error;
    const auto folder = sysfsRoot / "class" / "drm";
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string card = entry.path().filename().string();
        // cardN-NAME: a connector; cardN and renderDN are devices.
        const auto dash = card.find('-');
        if (card.rfind("card", 0) != 0 || dash == std::string::npos) continue;
        DrmConnector c;
        c.name = card.substr(dash + 1);
        c.connected = firstLine(entry.path() / "status") == "connected";
        c.enabled = firstLine(entry.path() / "enabled") == "enabled";
        c.identity.connector = c.name;
        c.identity.edid = parseEdid(readBytes(entry.path() / "edid"));
        connectors.push_back(std::move(c));
    }
    std::sort(connectors.begin(), connectors.end(),
              [](const DrmConnector& a, const DrmConnector& b) { return a.name < b.name; });
    std::vector<OutputIdentity> identities;
    for (const auto& c : connectors)
        identities.push_back(c.identity);
    const auto ids = stableDisplayIDs(identities);
    for (std::size_t i = 0; i < connectors.size(); ++i)
        connectors[i].id = ids[i];
    return connectors;
}

std::optional<DisplayID> drmDisplayFor(const std::filesystem::path& sysfsRoot,
                                       const std::string& connector) {
    for (const auto& c : readDrmConnectors(sysfsRoot)) {
        if (c.name == connector && c.connected) return c.id;
    }
    return std::nullopt;
}

}  // namespace lumora::lx
