#include "lid/LidMode.h"

#include <ostream>

namespace lumora {

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

std::ostream& operator<<(std::ostream& out, LidMode mode) {
    return out << rawValue(mode);
}

}  // namespace lumora
