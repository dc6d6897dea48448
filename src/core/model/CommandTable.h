#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace lumora {

// One word of a command's short form (`lumora COMMAND WORD...`) and the query items it gives.
struct CommandWord {
    enum class Place {
        item,      // the word is the value of `key`
        size,      // WIDTHxHEIGHT: "width" and "height"
        sizeRate,  // WIDTHxHEIGHT@HZ, the refresh optional: also "hz"
        density,   // "hidpi" or "lodpi" (any other word is taken as it is) for "hidpi"
    };
    std::string_view shown;  // in the synopsis
    Place place = Place::item;
    std::string_view key;  // for Place::item and Place::density
};

// One URL command: everything the dispatcher, the short-command parser and the help text know
// of it. The dispatcher's handlers follow this table's order.
struct CommandSpec {
    static constexpr std::size_t kMostWords = 3;
    // Which first DDC scan the command waits for before it runs.
    enum class Wait { none, itsDisplay, everyDisplay };

    std::string_view name;     // the URL's host: lumora://<name>?...
    std::string_view keys;     // its query keys, e.g. "display, value (required)"
    std::string_view summary;  // what it does, one short phrase
    std::array<std::optional<CommandWord>, kMostWords> words{};
    Wait wait = Wait::none;
};

namespace command_words {
inline constexpr CommandWord kDisplay{"DISPLAY", CommandWord::Place::item, "display"};
inline constexpr CommandWord kValue{"VALUE", CommandWord::Place::item, "value"};
inline constexpr CommandWord kOn{"on|off", CommandWord::Place::item, "on"};
inline constexpr CommandWord kDensity{"hidpi|lodpi", CommandWord::Place::density, "hidpi"};
}  // namespace command_words

// Every command the agent knows, in a fixed order.
inline constexpr std::array kCommandTable = [] {
    using namespace command_words;
    using P = CommandWord::Place;
    using W = CommandSpec::Wait;
    return std::array{
        CommandSpec{"hidpi", "display, on", "HiDPI on or off; toggles without on", {kDisplay, kOn}},
        CommandSpec{"brightness",
                    "display, value (required)",
                    "sets the brightness (0-1, or a percentage)",
                    {kDisplay, kValue},
                    W::itsDisplay},
        CommandSpec{
            "brightness-up", "display", "one step (1/16) brighter", {kDisplay}, W::itsDisplay},
        CommandSpec{
            "brightness-down", "display", "one step (1/16) darker", {kDisplay}, W::itsDisplay},
        CommandSpec{
            "connect", "display, on", "switches the display on (on=0: off)", {kDisplay, kOn}},
        CommandSpec{
            "disconnect", "display", "switches the display off without unplugging it", {kDisplay}},
        CommandSpec{"main", "display", "makes the display the main one", {kDisplay}},
        CommandSpec{"mode",
                    "display, width and height (required), hidpi, hz",
                    "the first mode of that size, density and refresh",
                    {kDisplay, CommandWord{"WIDTHxHEIGHT[@HZ]", P::sizeRate, {}}, kDensity}},
        CommandSpec{
            "dim", "display, value", "dims in software; no value: black", {kDisplay, kValue}},
        CommandSpec{"ddc",
                    "display, vcp (required, hex), value (required)",
                    "sends one raw DDC/CI value",
                    {kDisplay, CommandWord{"VCP", P::item, "vcp"}, kValue},
                    W::itsDisplay},
        CommandSpec{"sleep-displays", "", "puts the displays to sleep"},
        CommandSpec{"virtual",
                    "width and height (required), name, hidpi",
                    "creates a virtual screen (HiDPI unless hidpi=0)",
                    {CommandWord{"WIDTHxHEIGHT", P::size, {}}, CommandWord{"NAME", P::item, "name"},
                     kDensity}},
        CommandSpec{"status", "", "only writes the status file", {}, W::everyDisplay},
        CommandSpec{"panel", "on", "shows or hides the panel window; toggles without on", {kOn}},
        CommandSpec{"adaptive",
                    "value (required: off, sync, sensor or schedule), latitude, longitude",
                    "adaptive brightness: follow the built-in display, the light sensor or the sun",
                    {CommandWord{"off|sync|sensor|schedule", P::item, "value"},
                     CommandWord{"LATITUDE", P::item, "latitude"},
                     CommandWord{"LONGITUDE", P::item, "longitude"}},
                    W::everyDisplay},
    };
}();

inline std::span<const CommandSpec> commandTable() {
    return kCommandTable;
}

// The command of that name, or nothing.
inline const CommandSpec* findCommand(std::string_view name) {
    for (const CommandSpec& c : kCommandTable) {
        if (c.name == name) return &c;
    }
    return nullptr;
}

}  // namespace lumora
