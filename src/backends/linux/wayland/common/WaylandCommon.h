#pragma once

#include <functional>
#include <string>

#include "platform/DisplayServer.h"

namespace lumora::wl {

// Where a backend writes one line per failure of the compositor; the application passes the
// event log's write.
using LogFunction = std::function<void(const std::string&)>;

// The compositor refused or failed a configuration or gamma request that was well formed
// (it answered with an error, cancelled it, or did not answer).
inline constexpr ConfigStatus kConfigRefused = 1002;

}  // namespace lumora::wl
