#pragma once

#include <chrono>
#include <iosfwd>
#include <optional>
#include <string>

#include "runtime/InstanceChannel.h"

namespace lumora::app {

// Exit statuses of a command handed to the agent.
inline constexpr int kCarriedOut = 0;
inline constexpr int kNothingDone = 1;

// Tells the caller what became of a command: one line on `err` when it did nothing, the status
// file on `out` when asked for. Returns the exit status.
int reportOutcome(const InstanceChannel::Answer& answer, bool printStatus, std::ostream& out,
                  std::ostream& err);

// Hands `url` to this user's agent and reports its outcome; nothing when no agent listens.
std::optional<int> handOverCommand(
    const std::string& socketPath, const std::string& url, bool printStatus, std::ostream& out,
    std::ostream& err, std::chrono::milliseconds timeout = InstanceChannel::kHandOverTimeout);

}  // namespace lumora::app
