#pragma once

#include <map>
#include <optional>
#include <string>

#include "ddc/DdcTiming.h"
#include "platform/Defaults.h"

namespace lumora {

// The waits learned per monitor (persistent key), kept across starts under "ddcTiming" as
// {"KEY": [quiet ms, reply wait ms]}. Entries that are not two numbers between the fastest
// wait and the defaults are ignored: a corrupt store costs a relearning, never a wrong wait.
class DdcTimingMemory {
  public:
    static constexpr const char* kKey = "ddcTiming";

    explicit DdcTimingMemory(Defaults& defaults);

    [[nodiscard]] std::optional<DdcTiming> learned(const std::string& monitor) const;
    // Stores at once; the defaults themselves are not kept.
    void remember(const std::string& monitor, const DdcTiming& timing);

  private:
    Defaults& defaults_;
    std::map<std::string, DdcTiming> learned_;
};

}  // namespace lumora
