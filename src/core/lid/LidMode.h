#pragma once

#include <iosfwd>
#include <optional>
#include <string_view>

namespace lumora {

// The lid machine's coarse state. The raw values are what log lines and the interface show.
enum class LidMode { unknown, open, closedExternal, closedAlone };

std::string_view rawValue(LidMode mode);

std::ostream& operator<<(std::ostream& out, LidMode mode);

}  // namespace lumora
