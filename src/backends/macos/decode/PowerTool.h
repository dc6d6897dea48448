#pragma once

#include <sys/types.h>

#include <string>

#include "decode/ChildProcesses.h"
#include "platform/Power.h"

namespace lumora::mac {

// The system's power tool (pmset) for the two sleep requests.
class PowerTool {
  public:
    static constexpr const char* kPmset = "/usr/bin/pmset";

    explicit PowerTool(std::string toolPath = kPmset);

    // "displaysleepnow"; while the previous display-sleep run has not ended, starts nothing
    // and reports started: the displays are already on their way down.
    PowerRequest sleepDisplays();
    // "sleepnow"; the run is not followed beyond reaping it.
    PowerRequest sleepSystem();
    [[nodiscard]] bool installed() const;

  private:
    std::string path_;
    ChildProcesses children_;
    pid_t displaySleep_ = 0;
};

}  // namespace lumora::mac
