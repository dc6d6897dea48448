#pragma once

#include <map>
#include <optional>
#include <span>
#include <variant>
#include <vector>

#include "x11/DisplayWorld.h"

namespace lumora::lx {

// Where one output shows what: its mode, its top-left corner on the screen and its rotation.
struct Placement {
    XId mode = 0;
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::uint16_t rotation = kRotate0;
    friend bool operator==(const Placement&, const Placement&) = default;
};

// The lit outputs of a screen and where each shows.
using Layout = std::map<XId, Placement>;

// The changes of one configuration transaction, in the order they were queued. Origins are in
// screen coordinates.
struct SetModeChange {
    DisplayID id;
    XId mode;
};
struct SetOriginChange {
    DisplayID id;
    std::int32_t x;
    std::int32_t y;
};
struct SetMainChange {
    DisplayID id;
};
struct SetMirrorChange {
    DisplayID id;
    DisplayID target;  // 0 ends the mirroring
};
struct SetEnabledChange {
    DisplayID id;
    bool enabled;
};
using ConfigChange =
    std::variant<SetModeChange, SetOriginChange, SetMainChange, SetMirrorChange, SetEnabledChange>;

// What the display server remembers between transactions.
struct LayoutMemory {
    MirrorMemory mirrors;
    // Where each display Lumora switched off was, to bring it back exactly there.
    std::map<DisplayID, Placement> switchedOff;
};

struct PlannedLayout {
    Layout layout;
    XId primary = 0;
    std::uint32_t width = 0;  // the screen: the bounding box of the layout
    std::uint32_t height = 0;
};

// The layout the screen shows now.
[[nodiscard]] Layout currentLayout(const RandrWorld& randr);

// Applies the changes to the current layout. Nothing when they cannot be carried out (no mode
// two mirrored displays share, a display without modes to switch on); `memory` is updated only
// when a plan comes back.
[[nodiscard]] std::optional<PlannedLayout> planLayout(const DisplayWorld& world,
                                                      std::span<const ConfigChange> changes,
                                                      LayoutMemory& memory);

// What every CRTC of the screen has to show for `layout`: an output keeps its CRTC when it can,
// others take a free one they may use. Nothing when some output finds none.
struct CrtcSetting {
    XId crtc = 0;
    std::optional<Placement> placement{};  // nothing: off
    std::vector<XId> outputs{};
    friend bool operator==(const CrtcSetting&, const CrtcSetting&) = default;
};
[[nodiscard]] std::optional<std::vector<CrtcSetting>> assignCrtcs(const RandrWorld& randr,
                                                                  const Layout& layout);

// The CRTC settings the screen shows now, in the same form.
[[nodiscard]] std::vector<CrtcSetting> currentCrtcs(const RandrWorld& randr);

}  // namespace lumora::lx
