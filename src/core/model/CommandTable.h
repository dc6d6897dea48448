#pragma once

#include <span>
#include <string_view>

namespace lumora {

// One URL command as scripts and the help text see it.
struct CommandSpec {
    std::string_view name;     // the URL's host: lumora://<name>?...
    std::string_view keys;     // its query keys, e.g. "display, value (required)"
    std::string_view summary;  // what it does, one short phrase
};

// Every command the agent knows, in a fixed order. The dispatcher carries out exactly these,
// and `lumora --help` lists exactly these.
std::span<const CommandSpec> commandTable();

}  // namespace lumora
