#pragma once

#include <string>
#include <utility>

namespace lumora {

// What became of one URL command, for whoever sent it (the command line's exit status).
// The status file and the log are written either way.
struct CommandResult {
    bool carriedOut = false;
    // One line saying why nothing was done ("display not found: tv", "unknown command: x").
    std::string problem;

    static CommandResult done() { return {true, {}}; }
    static CommandResult nothing(std::string why) { return {false, std::move(why)}; }
    friend bool operator==(const CommandResult&, const CommandResult&) = default;
};

}  // namespace lumora
