#include "decode/LoginItemState.h"

namespace lumora::mac {

std::filesystem::path launchAgentFile(const std::filesystem::path& home,
                                      const std::string& bundleIdentifier) {
    return home / "Library" / "LaunchAgents" / (bundleIdentifier + ".plist");
}

bool loginItemOn(std::int64_t status) {
    return status == static_cast<std::int64_t>(LoginItemStatus::enabled);
}

}  // namespace lumora::mac
