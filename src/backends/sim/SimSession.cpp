#include "sim/SimSession.h"

#include <system_error>
#include <utility>

namespace lumora::sim {

namespace {

const char* const kNoVersion = "dev";

}  // namespace

SimSession::SimSession(std::filesystem::path home, std::string version)
    : home_(std::move(home)), version_(std::move(version)) {}

std::string SimSession::version() const {
    return version_.empty() ? kNoVersion : version_;
}

std::filesystem::path SimSession::statusFile() const {
    return home_ / ".local" / "state" / "lumora" / "status.json";
}

std::filesystem::path SimSession::launchAgentFile() const {
    return home_ / ".config" / "autostart" / "lumora.desktop";
}

bool SimSession::launchAgentInstalled() const {
    std::error_code ec;
    return std::filesystem::exists(launchAgentFile(), ec);
}

}  // namespace lumora::sim
