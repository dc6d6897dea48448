#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "display/DisplayInfo.h"
#include "display/DisplayMode.h"
#include "log/Log.h"
#include "platform/Defaults.h"
#include "platform/DisplayServer.h"

namespace lumora {

// The displays of the machine: which there are, what they are called, their modes, and the
// changes the program makes to them (mode, main display, mirroring, software disconnect).
// Holds the little state the program keeps about displays: the remembered built-in panel,
// the program's own virtual displays, names seen earlier and the displays it switched off.
// Main thread only.
class Displays {
  public:
    // The three facts the lid logic needs.
    struct Snapshot {
        std::int64_t externals = 0;  // online, neither built-in nor virtual
        bool builtinOnline = false;
        bool builtinAsleep = true;  // also when the panel is not online
        friend bool operator==(const Snapshot&, const Snapshot&) = default;
    };

    static constexpr const char* kBuiltinIDKey = "builtinDisplayID";
    static constexpr const char* kDisconnectedKey = "disconnectedDisplays";
    static constexpr const char* kBuiltinName = "Built-in Display";

    // Reads the remembered built-in panel and the disconnected displays from `defaults`.
    Displays(DisplayServer& server, Defaults& defaults, Log& log);
    Displays(const Displays&) = delete;
    Displays& operator=(const Displays&) = delete;

    // --- Inventory ---
    [[nodiscard]] std::vector<DisplayID> onlineIDs() const;
    // The screen's name, else a name seen earlier, else the name stored when it was switched
    // off, else "Built-in Display" or "Display {id}".
    std::string name(DisplayID id);
    // Online displays, then the ones switched off, then the absent built-in panel; built-in
    // entries first, each group by ascending id.
    std::vector<DisplayInfo> list();
    [[nodiscard]] std::optional<DisplayMode> currentMode(DisplayID id) const;
    [[nodiscard]] std::vector<DisplayMode> modes(DisplayID id) const;
    [[nodiscard]] bool isVirtual(DisplayID id) const;
    [[nodiscard]] bool isBuiltin(DisplayID id) const;
    [[nodiscard]] DisplayID builtinID() const { return builtinID_; }
    [[nodiscard]] const std::set<DisplayID>& virtualIDs() const { return virtualIDs_; }
    void setVirtualIDs(std::set<DisplayID> ids) { virtualIDs_ = std::move(ids); }
    void addVirtualID(DisplayID id) { virtualIDs_.insert(id); }
    void removeVirtualID(DisplayID id) { virtualIDs_.erase(id); }
    // Also remembers the built-in panel's id when it differs from the stored one.
    Snapshot snapshot();

    // --- Configuration ---
    bool setMode(DisplayID id, const DisplayMode& mode);
    // Makes `id` the main display (on platforms where the main display is the one at the
    // origin, every display moves with it).
    bool setMain(DisplayID id);
    // target 0 ends the mirroring of id.
    bool mirror(DisplayID id, DisplayID target);
    [[nodiscard]] DisplayID mirrorSource(DisplayID id) const;
    // Switches a display off or on for this session. `quiet` silences only success.
    bool setEnabled(DisplayID id, bool enabled, bool quiet);
    // Switches back on every display the program switched off.
    void reconnectAll();
    [[nodiscard]] const std::map<DisplayID, std::string>& disconnected() const {
        return disconnected_;
    }

    DisplayServer& server() { return server_; }

  private:
    std::string nameAmong(DisplayID id, const std::vector<Screen>& screens);
    [[nodiscard]] bool isVirtual(DisplayID id, std::uint32_t vendor) const;
    void loadBuiltinID();
    void loadDisconnected();
    void saveDisconnected();

    DisplayServer& server_;
    Defaults& defaults_;
    Log& log_;
    DisplayID builtinID_ = 0;
    std::set<DisplayID> virtualIDs_;
    std::map<DisplayID, std::string> names_;  // only grows
    std::map<DisplayID, std::string> disconnected_;
};

}  // namespace lumora
