#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumora::app {

// Short commands: `lumora COMMAND [DISPLAY] [VALUE...] [KEY=VALUE...]` means the same as the
// lumora:// URL, so that scripts need not quote URLs.
//
// The words after the command fill its places in a fixed order, the display always first:
// `lumora dim 3` dims display 3 to black and `lumora dim 3 40` to 40 %; `lumora brightness 70`
// names display 70 and so lacks a value. "cursor" names the display under the pointer, as does
// leaving every word off. Words may be left off from the end only; a word KEY=VALUE whose KEY
// is one of the command's keys sets that key by name, anywhere after the command.
// WIDTHxHEIGHT[@HZ] gives a mode's width, height and refresh in one word; "hidpi" and "lodpi"
// stand for hidpi=1 and hidpi=0.
struct ShortCommand {
    std::string url;    // lumora://COMMAND?KEY=VALUE&...
    std::string error;  // set when the words cannot make a URL
};

// `words` starts with the command. A command the agent does not know becomes lumora://COMMAND
// with nothing else, for the agent to refuse.
ShortCommand shortCommandUrl(const std::vector<std::string>& words);

// The command with its places, as the help text shows it: "brightness DISPLAY VALUE". Empty
// for a command that has no short form.
std::string shortCommandSynopsis(std::string_view command);

}  // namespace lumora::app
