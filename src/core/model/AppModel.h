#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "ddc/DDCService.h"
#include "ddc/VCP.h"
#include "display/Brightness.h"
#include "display/ColorAdjust.h"
#include "display/DisplayInfo.h"
#include "display/Displays.h"
#include "display/Gamma.h"
#include "input/Hotkeys.h"
#include "input/MediaKeys.h"
#include "input/Shortcut.h"
#include "input/ShortcutAction.h"
#include "input/ShortcutMap.h"
#include "lid/LidConfig.h"
#include "lid/LidController.h"
#include "lid/LidMode.h"
#include "log/Log.h"
#include "model/Observable.h"
#include "model/Settings.h"
#include "model/UrlCommand.h"
#include "platform/AVServices.h"
#include "platform/Backlight.h"
#include "platform/Defaults.h"
#include "platform/DisplayServer.h"
#include "platform/Input.h"
#include "platform/LidSensor.h"
#include "platform/Osd.h"
#include "platform/Power.h"
#include "platform/Scheduler.h"
#include "platform/Session.h"
#include "platform/SystemEvents.h"
#include "platform/VirtualDisplays.h"
#include "virtual/HiDPI.h"
#include "virtual/VirtualScreenConfig.h"
#include "virtual/VirtualScreens.h"

namespace lumora {

// Every port and shared service the application model works through. All must outlive it.
struct AppPorts {
    Scheduler& scheduler;
    DisplayServer& displayServer;
    Backlight& backlight;
    AVServices& avServices;
    VirtualDisplays& virtualDisplays;
    Power& power;
    LidSensor& lidSensor;
    SystemEvents& systemEvents;
    Input& input;
    Osd& osd;
    Session& session;
    Defaults& defaults;
    Displays& displays;
    Log& log;
};

// The one observable object of the application: every value the interface shows, the
// managers of the other subsystems, the DDC cache and queue, and every user action. Keeps
// itself current by re-reading the displays after each reconfiguration.
//
// Main thread only; DDC traffic runs on the serial queue "lumora.ddc" and reports back on the
// main queue. Delayed work holds the model weakly and does nothing once it is gone.
class AppModel : public std::enable_shared_from_this<AppModel> {
  public:
    using DdcValues = std::map<DisplayID, std::map<std::uint8_t, double>>;

    // Reconfiguration bursts are merged into one refresh this long after the first event.
    static constexpr double kRefreshDelay = 0.3;
    // A DDC write waits this long for a newer value of the same display and control: a
    // dragged slider must not flood the monitor's slow I2C channel.
    static constexpr double kDdcDebounce = 0.08;
    // HiDPI sessions come up asynchronously (the mirroring step runs a second after the
    // virtual display appears), so a toggle refreshes again after this.
    static constexpr double kHiDPISecondRefresh = 1.5;
    // The brightness control never takes a software-dimmed screen fully black; only
    // dim-to-black and the "dim" command can.
    static constexpr double kSoftwareDimFloor = 0.02;
    // DDC brightness is written as a percentage, whatever maximum the monitor reports.
    static constexpr std::uint16_t kDdcBrightnessMax = 100;
    static constexpr double kStep = 1.0 / 16;
    static constexpr double kFineStep = 1.0 / 64;
    // Below this level the on-screen display shows the small sun.
    static constexpr double kDimSymbolBelow = 0.3;
    static constexpr const char* kSleepAssertionType = "PreventUserIdleSystemSleep";
    static constexpr const char* kSleepAssertionName = "Lumora: external display connected";
    static constexpr const char* kDdcQueueLabel = "lumora.ddc";

    // Loads the settings and creates the managers; nothing is started.
    static std::shared_ptr<AppModel> create(AppPorts ports);
    ~AppModel();
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;

    // --- Published state, in declaration order. Subscribers hear of a change before it. ---
    [[nodiscard]] const Published<std::vector<DisplayInfo>>& displays() const { return displays_; }
    [[nodiscard]] const Published<double>& builtinBrightness() const { return builtinBrightness_; }
    [[nodiscard]] const Published<DdcValues>& ddcValues() const { return ddcValues_; }
    [[nodiscard]] const Published<std::set<DisplayID>>& ddcAvailable() const {
        return ddcAvailable_;
    }
    [[nodiscard]] const Published<ColorMap>& color() const { return color_; }
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
    [[nodiscard]] const Published<bool>& accessibilityOK() const { return accessibilityOK_; }
    // Fires before any published field changes.
    [[nodiscard]] const Signal& objectWillChange() const { return objectWillChange_; }

    [[nodiscard]] bool launchAgentInstalled() const { return launchAgentInstalled_; }

    // Settings that persist and act at once. An equal lidConfig does nothing.
    void setLidConfig(const LidConfig& config);
    void setPreventSleepWithExternal(bool on);
    void setBrightnessKeys(bool on);
    // View state only.
    void setExpandedColor(std::set<DisplayID> ids) { expandedColor_.set(std::move(ids)); }
    void setVirtualHiDPI(bool on) { virtualHiDPI_.set(on); }

    // --- Refresh cycle ---
    void start();
    void refresh();
    void updateMediaKeys();

    // --- Display control ---
    void rescanDDC();
    // Caches value (0…1) at once; the monitor gets round(value × max) kDdcDebounce later.
    void setDDC(DisplayID display, VCP vcp, double value, std::uint16_t max);
    // One raw write at once, logged.
    void sendDDC(DisplayID display, VCP vcp, std::uint16_t raw);
    [[nodiscard]] double brightnessLevel(DisplayID display) const;
    void setBrightness(DisplayID display, double level);
    void stepBrightness(DisplayID display, bool up, bool fine);
    void setBuiltinBrightness(double level);
    void setColor(DisplayID display, const ColorAdjust& adjust);
    // Re-applies the saved colour of the online displays.
    void applyColor();
    // Blacks the display out, or brings it back to the dim it had before.
    void dimToBlack(DisplayID display);
    void setHiDPI(DisplayID display, bool on);
    // The physical display under the pointer; a monitor in HiDPI is named by its own id.
    [[nodiscard]] std::optional<DisplayID> displayUnderCursor() const;
    // "cursor", "main", "builtin" (any case), a decimal id, or part of a display's name.
    [[nodiscard]] std::optional<DisplayID> resolve(std::optional<std::string_view> argument) const;

    // --- Command interface ---
    // Parses, logs and carries out one URL; text that is no URL with a host is dropped.
    void handleURL(std::string_view url);
    void handle(const std::string& command, const Query& query);
    void writeStatus();
    // What writeStatus writes.
    [[nodiscard]] nlohmann::json statusJson() const;

    // --- Shortcuts ---
    void perform(ShortcutAction action);
    void startRecording(ShortcutAction action);
    // Each key-down while recording; true when the event is swallowed (always, while
    // recording). Escape cancels, Delete clears the binding, a combination with a modifier
    // is bound, a plain key is ignored and recording goes on.
    bool recordKey(const KeyEvent& event);
    void stopRecording();
    // The brightness-key tap's question: true when the key was used on an external display.
    bool brightnessKeyPressed(bool up, bool fine);

    // The owned managers, for the application's shutdown and the settings sections.
    [[nodiscard]] LidController& lid() { return *lid_; }
    [[nodiscard]] VirtualScreens& virtualScreens() { return virtualScreens_; }
    [[nodiscard]] HiDPI& hidpi() { return hidpi_; }

  private:
    struct Passkey {};

  public:
    AppModel(Passkey, AppPorts ports);

  private:
    void scheduleRefresh(bool rescan);
    void updateSleepAssertion();
    void publishDdc(std::map<DisplayID, std::shared_ptr<DDCService>> services, DdcValues values);
    [[nodiscard]] std::optional<DisplayID> builtinInList() const;
    void handleMode(const Query& query);
    void handleVirtual(const Query& query);
    void handleDdc(std::optional<DisplayID> display, const Query& query);
    void showLevel(DisplayID display, double level);

    AppPorts ports_;
    Signal objectWillChange_;  // before the published fields, which refer to it

    Published<std::vector<DisplayInfo>> displays_{{}, &objectWillChange_};
    Published<double> builtinBrightness_{0.5, &objectWillChange_};
    Published<DdcValues> ddcValues_{{}, &objectWillChange_};
    Published<std::set<DisplayID>> ddcAvailable_{{}, &objectWillChange_};
    Published<ColorMap> color_{{}, &objectWillChange_};
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
    Published<bool> accessibilityOK_{false, &objectWillChange_};

    bool launchAgentInstalled_ = false;
    std::shared_ptr<LidController> lid_;
    VirtualScreens virtualScreens_;
    HiDPI hidpi_;
    Hotkeys hotkeys_;
    MediaKeys mediaKeys_;
    Brightness brightness_;
    Gamma gamma_;
    std::map<DisplayID, std::shared_ptr<DDCService>> ddc_;
    std::shared_ptr<WorkQueue> ddcQueue_;
    std::map<std::string, TaskHandle> pendingDDC_;  // "displayID-code", both decimal
    Power::AssertionID sleepAssertion_ = 0;
    bool refreshScheduled_ = false;
    std::map<DisplayID, double> savedDim_;
    std::optional<int> reconfiguration_;
    bool started_ = false;
};

}  // namespace lumora
