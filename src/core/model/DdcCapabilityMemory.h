#pragma once

#include <map>
#include <optional>
#include <string>

#include "ddc/DdcCapabilities.h"
#include "platform/Defaults.h"

namespace lumora {

// Each monitor's capabilities string (by persistent key) under "ddcCapabilities", so that it
// is read from a monitor once, not at every start. Only strings that parse are kept; anything
// else stored there is ignored, and the monitor is asked again.
class DdcCapabilityMemory {
  public:
    static constexpr const char* kKey = "ddcCapabilities";

    explicit DdcCapabilityMemory(Defaults& defaults);

    [[nodiscard]] std::optional<DdcCapabilities> known(const std::string& monitor) const;
    // False for a string that does not parse: nothing is kept.
    bool remember(const std::string& monitor, const std::string& text);

  private:
    Defaults& defaults_;
    std::map<std::string, std::string> texts_;
};

}  // namespace lumora
