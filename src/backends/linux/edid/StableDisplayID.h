#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "edid/Edid.h"
#include "platform/Types.h"

namespace lumora::lx {

// One output of the machine as far as its identity goes.
struct OutputIdentity {
    std::string connector;         // "DP-1", "eDP-1", "HDMI-A-2", ...
    std::optional<EdidInfo> edid;  // nothing when the output has no (valid) EDID
};

// The identifier of one display taken alone: from the EDID's vendor, product and serial
// (number and text), or from the connector name when there is no EDID. Never 0. The same
// monitor gets the same identifier on any port and after a reboot.
[[nodiscard]] DisplayID stableDisplayID(const OutputIdentity& output);

// Identifiers of all outputs of one machine, in the order given, pairwise distinct. The first
// of several monitors with one identity (identical models without serials) keeps the plain
// identifier; the others are told apart by their connectors.
[[nodiscard]] std::vector<DisplayID> stableDisplayIDs(std::span<const OutputIdentity> outputs);

}  // namespace lumora::lx
