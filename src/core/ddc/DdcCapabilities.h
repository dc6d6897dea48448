#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumora {

// What a monitor's capabilities string says Lumora can use: its model, the MCCS version and
// the VCP codes it lists, each with the values it names (inputs for 0x60, say), empty when it
// lists none.
struct DdcCapabilities {
    std::string model;
    std::string mccs;
    std::map<std::uint8_t, std::vector<std::uint8_t>> vcp;
    friend bool operator==(const DdcCapabilities&, const DdcCapabilities&) = default;

    [[nodiscard]] bool lists(std::uint8_t code) const { return vcp.contains(code); }
};

// Parses "(prot(monitor)type(lcd)model(X)cmds(01 02 03)vcp(10 12 60(0F 11 12))mccs_ver(2.2))".
// Nothing when the text has no parsable vcp(...) list: unbalanced parentheses, codes that are
// not hexadecimal pairs, control bytes. Garbage never crashes it.
std::optional<DdcCapabilities> parseCapabilities(std::string_view text);

// The MCCS name of an input source value of VCP 0x60 ("HDMI 1"); "0x1b" for one it does not
// name.
std::string inputSourceName(std::uint8_t value);

}  // namespace lumora
