#include "decode/PowerTool.h"

#include <unistd.h>
#include <utility>

namespace lumora::mac {

namespace {

constexpr const char* kDisplaySleepNow = "displaysleepnow";
constexpr const char* kSleepNow = "sleepnow";

}  // namespace

PowerTool::PowerTool(std::string toolPath) : path_(std::move(toolPath)) {}

bool PowerTool::installed() const {
    return access(path_.c_str(), X_OK) == 0;
}

PowerRequest PowerTool::sleepDisplays() {
    if (children_.running(displaySleep_)) return {true, {}};
    auto started = children_.spawn(path_, {kDisplaySleepNow});
    displaySleep_ = started.pid;
    return {started.pid != 0, std::move(started.error)};
}

PowerRequest PowerTool::sleepSystem() {
    auto started = children_.spawn(path_, {kSleepNow});
    return {started.pid != 0, std::move(started.error)};
}

}  // namespace lumora::mac
