#include "ddc/VCP.h"

namespace lumora {

std::optional<VCP> vcpFromCode(std::uint8_t value) {
    for (VCP vcp : kAllVCP) {
        if (code(vcp) == value) return vcp;
    }
    return std::nullopt;
}

std::uint8_t code(VCP vcp) {
    return static_cast<std::uint8_t>(vcp);
}

std::string_view name(VCP vcp) {
    switch (vcp) {
        case VCP::brightness:
            return "brightness";
        case VCP::contrast:
            return "contrast";
        case VCP::redGain:
            return "redGain";
        case VCP::greenGain:
            return "greenGain";
        case VCP::blueGain:
            return "blueGain";
        case VCP::input:
            return "input";
        case VCP::volume:
            return "volume";
        case VCP::mute:
            return "mute";
        case VCP::power:
            return "power";
    }
    return "unknown";
}

std::string hexCode(std::uint8_t code) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string out = "0x";
    if (code >= 0x10) out.push_back(kDigits[code >> 4]);
    out.push_back(kDigits[code & 0x0F]);
    return out;
}

}  // namespace lumora
