#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace lumora::app {

// The XDG autostart entry that starts the agent at login: the running binary, with
// --headless when the agent runs without windows.
std::string autostartEntry(const std::filesystem::path& binary, bool headless);

// One argument of a desktop entry's Exec key, quoted and escaped as the desktop entry rules
// require (a path with spaces, quotes, dollars or backslashes survives as one argument).
std::string quoteExecArgument(std::string_view argument);

}  // namespace lumora::app
