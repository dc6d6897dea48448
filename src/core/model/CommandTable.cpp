#include "model/CommandTable.h"

#include <array>

namespace lumora {

namespace {

constexpr std::array kCommands = {
    CommandSpec{"hidpi", "display, on", "HiDPI on or off; toggles without on"},
    CommandSpec{"brightness", "display, value (required)",
                "sets the brightness (0-1, or a percentage)"},
    CommandSpec{"brightness-up", "display", "one step (1/16) brighter"},
    CommandSpec{"brightness-down", "display", "one step (1/16) darker"},
    CommandSpec{"connect", "display, on", "switches the display on (on=0: off)"},
    CommandSpec{"disconnect", "display", "switches the display off without unplugging it"},
    CommandSpec{"main", "display", "makes the display the main one"},
    CommandSpec{"mode", "display, width and height (required), hidpi, hz",
                "the first mode of that size, density and refresh"},
    CommandSpec{"dim", "display, value", "dims in software; no value: black"},
    CommandSpec{"ddc", "display, vcp (required, hex), value (required)",
                "sends one raw DDC/CI value"},
    CommandSpec{"sleep-displays", "", "puts the displays to sleep"},
    CommandSpec{"virtual", "width and height (required), name, hidpi",
                "creates a virtual screen (HiDPI unless hidpi=0)"},
    CommandSpec{"status", "", "only writes the status file"},
    CommandSpec{"panel", "on", "shows or hides the panel window; toggles without on"},
    CommandSpec{"adaptive", "value (required: off, sync, sensor or schedule), latitude, longitude",
                "adaptive brightness: follow the built-in display, the light sensor or the sun"},
};

}  // namespace

std::span<const CommandSpec> commandTable() {
    return kCommands;
}

}  // namespace lumora
