#include "lid/LidMode.h"

#include <array>
#include <ostream>

namespace lumora {

namespace {

constexpr std::array kAllModes{LidMode::unknown, LidMode::open, LidMode::closedExternal,
                               LidMode::closedAlone};

}  // namespace

std::string_view rawValue(LidMode mode) {
    switch (mode) {
        case LidMode::unknown:
            return "unknown";
        case LidMode::open:
            return "open";
        case LidMode::closedExternal:
            return "closedExternal";
        case LidMode::closedAlone:
            return "closedAlone";
    }
    return "unknown";
}

std::optional<LidMode> lidModeFromRaw(std::string_view raw) {
    for (LidMode mode : kAllModes) {
        if (rawValue(mode) == raw) return mode;
    }
    return std::nullopt;
}

std::ostream& operator<<(std::ostream& out, LidMode mode) {
    return out << rawValue(mode);
}

}  // namespace lumora
