#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/DisplayServer.h"
#include "x11/RandrWorld.h"

namespace lumora::lx {

// Who mirrors whom, as Lumora arranged it: mirroring display → its source. RandR only shows two
// outputs showing the same picture; this tells which one was moved onto the other.
using MirrorMemory = std::map<DisplayID, DisplayID>;

// One connected (or lit) output as the display server port sees it.
struct DisplayFacts {
    DisplayID id = 0;
    XId output = 0;
    XId crtc = 0;  // 0 while switched off
    std::string connector;
    std::optional<EdidInfo> edid{};
    bool builtin = false;
    bool primary = false;
    Rect bounds;
    std::uint16_t rotation = kRotate0;
    std::optional<PlatformMode> mode{};
    std::vector<PlatformMode> modes{};
    Size physicalSize;  // mm
    DisplayID mirrorOf = 0;
    std::size_t gammaSize = 0;

    [[nodiscard]] bool online() const { return crtc != 0; }
    // The EDID monitor name, else the connector name.
    [[nodiscard]] std::string name() const;
    friend bool operator==(const DisplayFacts&, const DisplayFacts&) = default;
};

struct DisplayWorld {
    RandrWorld randr;
    std::vector<DisplayFacts> displays{};  // the server's output order
    DisplayID main = 0;

    [[nodiscard]] const DisplayFacts* find(DisplayID id) const;
    [[nodiscard]] const DisplayFacts* findOnline(DisplayID id) const;
};

// The displays of one RandR world: every connected output and every output with a CRTC. An
// output needs a CRTC with a mode to be online. `memory` decides which member of a mirror set
// is the source; entries the geometry no longer bears out are dropped from it.
[[nodiscard]] DisplayWorld describeDisplays(RandrWorld randr, MirrorMemory& memory);

// Per display, what happened between two worlds: one added, removed or changed each.
[[nodiscard]] std::vector<std::pair<DisplayID, DisplayChange>> diffDisplays(
    const DisplayWorld& before, const DisplayWorld& after);

// Whether a connector name belongs to a panel built into the machine.
[[nodiscard]] bool isBuiltinConnector(const std::string& connector);

}  // namespace lumora::lx
