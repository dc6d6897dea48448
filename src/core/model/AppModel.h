#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "adaptive/AdaptiveBrightness.h"
#include "base/FileReplace.h"
#include "display/DisplayInfo.h"
#include "display/Displays.h"
#include "input/Hotkeys.h"
#include "input/MediaKeys.h"
#include "input/Recording.h"
#include "input/ShortcutAction.h"
#include "input/ShortcutMap.h"
#include "lid/LidConfig.h"
#include "lid/LidController.h"
#include "lid/LidMode.h"
#include "log/Log.h"
#include "model/BrightnessControl.h"
#include "model/CommandDispatcher.h"
#include "model/CommandResult.h"
#include "model/DdcControl.h"
#include "model/Observable.h"
#include "model/ReconfigurationBurst.h"
#include "model/Settings.h"
#include "platform/Defaults.h"
#include "platform/Osd.h"
#include "platform/Platform.h"
#include "platform/Scheduler.h"
#include "platform/Session.h"
#include "virtual/HiDPI.h"
#include "virtual/VirtualScreenConfig.h"
#include "virtual/VirtualScreens.h"

namespace lumora {

// The machine and the application's services the model works through. All must outlive it.
struct AppPorts {
    Platform& platform;
    Scheduler& scheduler;
    Osd& osd;
    Session& session;
    Defaults& defaults;
    Displays& displays;
    Log& log;
};

// The one observable object of the application: every value the interface shows, the
// managers of the other subsystems and the wiring between them. Its parts carry the work:
// DdcControl (channels, cache, debounced writes), BrightnessControl (backlight / DDC /
// software brightness, colour, dim to black), CommandDispatcher (URL commands), the status
// file. Keeps itself current by re-reading the displays after each reconfiguration.
//
// Main thread only; DDC traffic runs on the serial queue "lumora.ddc" and reports back on the
// main queue. Delayed work holds the model weakly and does nothing once it is gone.
class AppModel : public std::enable_shared_from_this<AppModel> {
  public:
    using DdcValues = DdcControl::Values;

    // A reconfiguration is shown this long after the first event of its burst.
    static constexpr double kRefreshDelay = ReconfigurationBurst::kFirstRefreshDelay;
    // HiDPI sessions come up asynchronously (the mirroring step runs a second after the
    // virtual display appears), so a toggle refreshes again after this.
    static constexpr double kHiDPISecondRefresh = 1.5;
    static constexpr const char* kSleepInhibitionReason = "Lumora: external display connected";

    // Loads the settings and creates the managers; nothing is started.
    static std::shared_ptr<AppModel> create(AppPorts ports);
    ~AppModel();
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;

    // --- Published state. Subscribers hear of a change before it. ---
    [[nodiscard]] const Published<std::vector<DisplayInfo>>& displays() const { return displays_; }
    [[nodiscard]] const Published<double>& builtinBrightness() const {
        return brightness_.builtinBrightness();
    }
    [[nodiscard]] const Published<DdcValues>& ddcValues() const { return ddc_->values(); }
    [[nodiscard]] const Published<std::set<DisplayID>>& ddcAvailable() const {
        return ddc_->available();
    }
    [[nodiscard]] const Published<ColorMap>& color() const { return brightness_.color(); }
    [[nodiscard]] const Published<LidMode>& lidMode() const { return lidMode_; }
    [[nodiscard]] const Published<std::optional<std::int64_t>>& lidAngle() const {
        return lidAngle_;
    }
    [[nodiscard]] const Published<std::vector<VirtualScreenConfig>>& virtualConfigs() const {
        return virtualConfigs_;
    }
    [[nodiscard]] const Published<std::set<DisplayID>>& expandedColor() const {
        return expandedColor_;
    }
    [[nodiscard]] const Published<bool>& virtualHiDPI() const { return virtualHiDPI_; }
    [[nodiscard]] const Published<LidConfig>& lidConfig() const { return lidConfig_; }
    [[nodiscard]] const Published<bool>& preventSleepWithExternal() const {
        return preventSleepWithExternal_;
    }
    [[nodiscard]] const Published<std::set<DisplayID>>& hidpiOn() const { return hidpiOn_; }
    [[nodiscard]] const Published<ShortcutMap>& shortcuts() const { return shortcuts_; }
    [[nodiscard]] const Published<std::optional<ShortcutAction>>& recording() const {
        return recording_;
    }
    [[nodiscard]] const Published<bool>& brightnessKeys() const { return brightnessKeys_; }
    // Where the desktop binds the shortcuts (the portal on Wayland): the keys it reports for
    // each action, in its own words. Recording is then the desktop's business.
    [[nodiscard]] bool shortcutsByDesktop() const { return ports_.platform.input().bindsByName(); }
    [[nodiscard]] const Published<std::map<ShortcutAction, std::string>>& desktopTriggers() const {
        return desktopTriggers_;
    }
    [[nodiscard]] const Published<bool>& restoreAfterWake() const { return restoreAfterWake_; }
    [[nodiscard]] const Published<bool>& accessibilityOK() const { return accessibilityOK_; }
    // Fires before any published field changes.
    [[nodiscard]] const Signal& objectWillChange() const { return objectWillChange_; }

    [[nodiscard]] bool launchAgentInstalled() const { return launchAgentInstalled_; }
    // Asked anew each time: some depend on the displays online (gamma on a compositor).
    [[nodiscard]] Capabilities capabilities() const { return ports_.platform.capabilities(); }

    // Settings that persist and act at once. An equal lidConfig does nothing.
    void setLidConfig(const LidConfig& config);
    void setPreventSleepWithExternal(bool on);
    void setBrightnessKeys(bool on);
    // After a wake, re-apply the software colour and give monitors back the DDC values they
    // forgot (also after a monitor is plugged in again).
    void setRestoreAfterWake(bool on);
    // View state only.
    void setExpandedColor(std::set<DisplayID> ids) { expandedColor_.set(std::move(ids)); }
    void setVirtualHiDPI(bool on) { virtualHiDPI_.set(on); }

    // --- Refresh cycle ---
    void start();
    // The display server went away: the next start soon after puts back what the new server
    // does not know (displays switched off, monitors' DDC values).
    void rememberServerLoss();
    void refresh();
    void updateMediaKeys();

    // --- The parts ---
    [[nodiscard]] DdcControl& ddc() { return *ddc_; }
    [[nodiscard]] const DdcControl& ddc() const { return *ddc_; }
    [[nodiscard]] BrightnessControl& brightness() { return brightness_; }
    [[nodiscard]] const BrightnessControl& brightness() const { return brightness_; }
    [[nodiscard]] CommandDispatcher& dispatcher() { return dispatcher_; }
    // The display inventory and configuration.
    [[nodiscard]] Displays& inventory() { return ports_.displays; }
    [[nodiscard]] const Displays& inventory() const { return ports_.displays; }
    [[nodiscard]] AdaptiveBrightness& adaptive() { return *adaptive_; }
    [[nodiscard]] const AdaptiveBrightness& adaptive() const { return *adaptive_; }
    [[nodiscard]] LidController& lid() { return *lid_; }
    [[nodiscard]] const LidController& lid() const { return *lid_; }
    [[nodiscard]] VirtualScreens& virtualScreens() { return virtualScreens_; }
    [[nodiscard]] HiDPI& hidpi() { return hidpi_; }
    [[nodiscard]] const HiDPI& hidpi() const { return hidpi_; }
    [[nodiscard]] Osd& osd() { return ports_.osd; }
    [[nodiscard]] Log& log() { return ports_.log; }

    // --- Display operations the interface and the commands share ---
    void setHiDPI(DisplayID display, bool on);
    // The display whose mode and main-display role count: a monitor in HiDPI runs through
    // its backing virtual display.
    [[nodiscard]] DisplayID shownDisplay(DisplayID display) const;
    // Mode, main display, mirroring and switching off from the interface; each refreshes.
    bool setMode(DisplayID display, const DisplayMode& mode);
    bool setMain(DisplayID display);
    bool mirror(DisplayID display, DisplayID target);
    bool setEnabled(DisplayID display, bool enabled);
    void addVirtualScreen(const std::string& name, std::int64_t width, std::int64_t height,
                          double refresh, bool hiDPI);
    void removeVirtualScreen(std::uint32_t id);
    void setVirtualScreenEnabled(std::uint32_t id, bool enabled);
    // The physical display under the pointer; a monitor in HiDPI is named by its own id.
    [[nodiscard]] std::optional<DisplayID> displayUnderCursor() const;
    // The display an action without a named display acts on: the one under the pointer;
    // where the platform cannot tell where the pointer is, the display last chosen in the
    // panel or named by a command, else the main display.
    [[nodiscard]] std::optional<DisplayID> actionDisplay() const;
    void choose(DisplayID display) { chosen_ = display; }
    // Shows (true), hides (false) or toggles (nothing) the panel window; set by an agent that
    // shows windows. Without it the "panel" command has nothing to open.
    void setPanelHandler(std::function<void(std::optional<bool>)> handler) {
        panelHandler_ = std::move(handler);
    }
    // Empty or "cursor": actionDisplay(). Else "main", "builtin" (any case), a decimal id, or
    // part of a display's name.
    [[nodiscard]] std::optional<DisplayID> resolve(std::optional<std::string_view> argument) const;

    // --- Command interface ---
    // `done` runs once the command and the status write are finished (a command may wait
    // for the first DDC scan of its monitor).
    void handleURL(std::string_view url, CommandDispatcher::Done done = nullptr) {
        dispatcher_.handleURL(url, std::move(done));
    }
    void writeStatus();
    // The agent is ending: the status file says so ("running": false) from now on.
    void writeLastStatus();
    // What writeStatus writes.
    [[nodiscard]] nlohmann::json statusJson() const;

    // --- Shortcuts ---
    // Waits for the first DDC scan of the display under the pointer where it needs DDC.
    void perform(ShortcutAction action);
    void startRecording(ShortcutAction action);
    // Each key-down while recording; true when the event is swallowed (always, while
    // recording). Escape cancels, Delete clears the binding, a combination with a modifier
    // is bound, a plain key is ignored and recording goes on.
    bool recordKey(const KeyEvent& event);
    void stopRecording();
    // The brightness-key tap's question: true when the key was used on an external display.
    bool brightnessKeyPressed(bool up, bool fine);

  private:
    struct Passkey {};

  public:
    AppModel(Passkey, AppPorts ports);

  private:
    friend class CommandDispatcher;
    class AdaptiveLink;

    void scheduleRefresh(bool rescan);
    // Takes the mark rememberServerLoss left; true when it is recent.
    bool resumingAfterServerLoss();
    void startAdaptive();
    void updateSleepInhibition();
    void performNow(ShortcutAction action, DisplayID display);
    void didWake();

    AppPorts ports_;
    Signal objectWillChange_;  // before the published fields, which refer to it

    Published<std::vector<DisplayInfo>> displays_{{}, &objectWillChange_};
    Published<LidMode> lidMode_{LidMode::unknown, &objectWillChange_};
    Published<std::optional<std::int64_t>> lidAngle_{std::nullopt, &objectWillChange_};
    Published<std::vector<VirtualScreenConfig>> virtualConfigs_{{}, &objectWillChange_};
    Published<std::set<DisplayID>> expandedColor_{{}, &objectWillChange_};
    Published<bool> virtualHiDPI_{true, &objectWillChange_};
    Published<LidConfig> lidConfig_{LidConfig{}, &objectWillChange_};
    Published<bool> preventSleepWithExternal_{false, &objectWillChange_};
    Published<std::set<DisplayID>> hidpiOn_{{}, &objectWillChange_};
    Published<ShortcutMap> shortcuts_{{}, &objectWillChange_};
    Published<std::optional<ShortcutAction>> recording_{std::nullopt, &objectWillChange_};
    Published<bool> brightnessKeys_{true, &objectWillChange_};
    Published<std::map<ShortcutAction, std::string>> desktopTriggers_{{}, &objectWillChange_};
    Published<bool> restoreAfterWake_{true, &objectWillChange_};
    bool running_ = true;  // false once the agent is ending
    FailureThrottle statusWriteFailures_;
    std::string lastStatusText_;  // what the status file holds, as last written
    Published<bool> accessibilityOK_{false, &objectWillChange_};

    bool launchAgentInstalled_ = false;
    std::shared_ptr<DdcControl> ddc_;
    BrightnessControl brightness_;
    CommandDispatcher dispatcher_{*this};
    std::shared_ptr<LidController> lid_;
    std::unique_ptr<AdaptiveLink> adaptiveLink_;
    std::shared_ptr<AdaptiveBrightness> adaptive_;
    Subscription builtinWatch_;
    std::optional<DisplayID> chosen_;  // this session only
    std::function<void(std::optional<bool>)> panelHandler_;
    bool adaptiveStarted_ = false;
    bool adaptiveInputPosted_ = false;
    VirtualScreens virtualScreens_;
    HiDPI hidpi_;
    Hotkeys hotkeys_;
    MediaKeys mediaKeys_;
    std::unique_ptr<SleepInhibition> sleepInhibition_;
    ReconfigurationBurst burst_;
    std::optional<int> reconfiguration_;
    std::vector<SystemEvents::Token> wakeObservers_;
    bool started_ = false;
    bool ddcStarted_ = false;
};

}  // namespace lumora
