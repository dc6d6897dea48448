#pragma once

// The wlroots backend's own state: the Wayland connection, the heads and modes as the
// output-management protocol describes them, wl_output names and gamma controls.

#include <wayland-client.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "wayland/common/DisplayIdentity.h"
#include "wayland/common/DisplayWorld.h"
#include "wayland/common/WaylandCommon.h"
#include "wlr-gamma-control-unstable-v1-client.h"
#include "wlr-output-management-unstable-v1-client.h"
#include "xdg-output-unstable-v1-client.h"

namespace lumora::wl {

struct WlrootsState;
struct WlrHead;

struct WlrMode {
    WlrHead* head = nullptr;
    zwlr_output_mode_v1* proxy = nullptr;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t refresh = 0;  // mHz; 0 when the compositor gives none
    bool preferred = false;
    // The mode's key for the port's handles: size and refresh identify a mode of one head.
    [[nodiscard]] std::string key() const;
};

struct WlrHead {
    WlrootsState* state = nullptr;
    zwlr_output_head_v1* proxy = nullptr;
    std::string name;  // connector, also the wl_output name
    std::string description;
    std::string make;
    std::string model;
    std::string serial;
    std::int32_t widthMm = 0;
    std::int32_t heightMm = 0;
    std::vector<std::unique_ptr<WlrMode>> modes;
    WlrMode* current = nullptr;
    bool enabled = false;
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t transform = 0;
    double scale = 1;
    DisplayID id = 0;  // assigned when the compositor's state is done
    MonitorNumbers numbers;
    std::string key;  // persistent
};

// A wl_output as the compositor presents it to every client: its name (to find a head's
// gamma), and its current mode and place, for compositors whose output manager calls a head
// that shows a desktop disabled (sway 1.7's headless outputs do).
struct WlOutput {
    WlrootsState* state = nullptr;
    wl_output* proxy = nullptr;
    zxdg_output_v1* xdg = nullptr;
    std::uint32_t registryName = 0;
    std::uint32_t version = 0;
    std::string name;
    std::int32_t modeWidth = 0;  // current mode, pixels
    std::int32_t modeHeight = 0;
    std::int32_t refresh = 0;  // mHz
    std::int32_t transform = 0;
    std::int32_t scale = 1;
    std::int32_t x = 0;  // logical position
    std::int32_t y = 0;
};

// One mode as the port offers it: a mode object of the head, or a size the output has run in
// without one (outputs without a mode list take any size as a custom mode).
struct ModeView {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t refresh = 0;  // mHz
    bool preferred = false;
    WlrMode* proxy = nullptr;  // null: a custom mode
    [[nodiscard]] std::string key() const;
};

// What the port reports about a head, from the output manager where it says the head is on,
// else from the head's wl_output.
struct HeadView {
    bool online = false;
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t transform = 0;
    double scale = 1;
    std::optional<ModeView> current;
    std::vector<ModeView> modes;
};

struct WlrGammaControl {
    zwlr_gamma_control_v1* proxy = nullptr;
    std::uint32_t size = 0;
    bool answered = false;
    bool failed = false;
};

struct WlrootsState {
    LogFunction log;
    wl_display* display = nullptr;
    wl_registry* registry = nullptr;
    zwlr_output_manager_v1* manager = nullptr;
    std::uint32_t managerVersion = 0;
    zwlr_gamma_control_manager_v1* gammaManager = nullptr;
    zxdg_output_manager_v1* xdgManager = nullptr;
    std::vector<std::unique_ptr<WlrHead>> heads;
    std::vector<std::unique_ptr<WlOutput>> outputs;
    std::uint32_t serial = 0;
    bool haveState = false;
    bool connectionLost = false;

    DisplayWorld world;      // as the compositor's last complete batch left it
    DisplayWorld delivered;  // as the handlers last heard it
    ReconfigurationHandlers handlers;
    ModeHandles modeHandles;
    DisplayIDs displayIDs;
    std::map<std::string, std::vector<ModeView>> customModes;  // by connector, sizes seen

    // Gamma: ramp sizes learnt per connector (0: refused), and the controls Lumora holds.
    std::map<std::string, std::uint32_t> gammaSizes;
    std::map<std::string, std::unique_ptr<WlrGammaControl>> gammaControls;
    std::set<std::string> gammaAbsentLogged;

    WlrootsState() = default;
    WlrootsState(const WlrootsState&) = delete;
    WlrootsState& operator=(const WlrootsState&) = delete;
    ~WlrootsState();

    bool connect(const std::string& name);
    // Reads and dispatches what the compositor sent until `done` holds; false on a timeout or
    // a lost connection.
    bool waitUntil(const std::function<bool()>& done, int timeoutMs);
    // Round trip: everything the compositor sent before it answers is dispatched.
    bool sync();
    // Whatever has arrived, without waiting; what changed reaches the handlers.
    void dispatchPending();
    // One event per display for everything since the last delivery.
    void deliverChanges();

    // The compositor finished a batch of changes: new IDs and a new world.
    void stateDone();
    [[nodiscard]] HeadView view(const WlrHead& head) const;
    [[nodiscard]] WlrHead* head(DisplayID id) const;
    [[nodiscard]] WlrHead* onlineHead(DisplayID id) const;
    [[nodiscard]] DisplayWorld currentWorld() const;
    [[nodiscard]] WlOutput* output(const std::string& name) const;
    void watchOutput(WlOutput& output);
    void removeHead(WlrHead* head);

    // The ramp size for the head's output, probing once; 0 (and one log line) when refused.
    std::uint32_t gammaSize(const WlrHead& head);
    // A control held for the head, created on demand; nothing when refused.
    WlrGammaControl* heldGamma(const WlrHead& head);
    void releaseGamma(const std::string& connector);
    void gammaAbsent(const WlrHead& head, const std::string& why);
};

}  // namespace lumora::wl
