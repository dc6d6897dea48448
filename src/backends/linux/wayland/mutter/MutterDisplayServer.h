#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/DisplayServer.h"
#include "wayland/common/DisplayIdentity.h"
#include "wayland/common/DisplayWorld.h"
#include "wayland/common/WaylandCommon.h"
#include "wayland/mutter/MutterBus.h"
#include "wayland/mutter/MutterPlan.h"

namespace lumora::wl {

// Receives Mutter's MonitorsChanged on the Qt event loop.
class MutterSignalRelay : public QObject {
    Q_OBJECT
  public:
    explicit MutterSignalRelay(std::function<void()> onChange) : onChange_(std::move(onChange)) {}
  public slots:
    void monitorsChanged() { onChange_(); }

  private:
    std::function<void()> onChange_;
};

// The displays of a GNOME Wayland session, through org.gnome.Mutter.DisplayConfig.
//
// Online displays are the monitors in Mutter's logical monitors; a monitor left out of them is
// switched off and can be switched on again. Monitors sharing a logical monitor mirror its first
// monitor; the main display is the primary logical monitor's first. The state is read at start,
// after every configuration and on MonitorsChanged; queries answer from it without a call.
class MutterDisplayServer final : public DisplayServer {
  public:
    // Nothing when DisplayConfig does not answer on `bus`. MonitorsChanged is followed through
    // the Qt event loop of the calling (main) thread.
    static std::unique_ptr<MutterDisplayServer> create(QDBusConnection bus, LogFunction log);
    ~MutterDisplayServer() override;

    // DisplayConfig is on the bus. When it leaves (gnome-shell restarting, say) nothing can be
    // configured; when it comes back the displays are read again and the changes told.
    [[nodiscard]] bool present() const { return present_; }

    [[nodiscard]] std::vector<DisplayID> onlineIDs() const override;
    [[nodiscard]] DisplayID mainDisplay() const override;
    [[nodiscard]] bool isBuiltin(DisplayID id) const override;
    [[nodiscard]] bool isAsleep(DisplayID id) const override;
    [[nodiscard]] std::uint32_t vendor(DisplayID id) const override;
    [[nodiscard]] std::uint32_t model(DisplayID id) const override;
    [[nodiscard]] std::uint32_t serial(DisplayID id) const override;
    [[nodiscard]] std::string persistentKey(DisplayID id) const override;
    [[nodiscard]] double rotation(DisplayID id) const override;
    [[nodiscard]] Rect bounds(DisplayID id) const override;
    [[nodiscard]] Size physicalSize(DisplayID id) const override;
    [[nodiscard]] std::optional<PlatformMode> currentMode(DisplayID id) const override;
    [[nodiscard]] std::vector<PlatformMode> allModes(DisplayID id) const override;
    [[nodiscard]] DisplayID mirrorSource(DisplayID id) const override;

    std::unique_ptr<DisplayConfiguration> beginConfiguration() override;

    [[nodiscard]] std::size_t gammaRampSize(DisplayID id) const override;
    ConfigStatus setGamma(DisplayID id, const GammaRamps& ramps) override;
    void resetGamma(DisplayID id) override;

    [[nodiscard]] std::vector<Screen> screens() const override;
    [[nodiscard]] std::optional<Point> pointerLocation() const override { return std::nullopt; }

    int addReconfigurationHandler(ReconfigurationHandler handler) override;
    void removeReconfigurationHandler(int registration) override;

    // Blanks every monitor (PowerSaveMode off) until wakeDisplays() or user input.
    bool sleepDisplays();
    bool wakeDisplays();

    // Reads the compositor's state again and reports what changed to the handlers.
    void refresh();
    void ownerChanged(bool present);

    // What a configuration transaction knows about a display.
    [[nodiscard]] std::optional<std::string> connectorOf(DisplayID id) const;
    [[nodiscard]] bool isOnline(DisplayID id) const;
    [[nodiscard]] std::optional<std::string> modeKey(DisplayID id, std::int32_t handle) const;
    [[nodiscard]] std::optional<MutterPlacement> placementOf(const std::string& connector) const;
    void rememberPlacement(const std::string& connector, MutterPlacement placement);
    [[nodiscard]] std::optional<MutterPlacement> rememberedPlacement(
        const std::string& connector) const;
    // Plans and applies the changes; a stale serial is retried once with a fresh state.
    ConfigStatus apply(const MutterChanges& changes, ConfigureOption option);

  private:
    MutterDisplayServer(QDBusConnection bus, LogFunction log);

    struct Entry {
        DisplayID id = 0;
        const MutterMonitor* monitor = nullptr;
        const MutterLogicalMonitor* logical = nullptr;  // null: switched off
        MonitorNumbers numbers;
        std::string key;  // persistent
        Size millimetres;
    };
    struct Gamma {
        std::uint32_t crtc = 0;
        std::size_t size = 0;
        std::optional<GammaTables> original;  // the tables before Lumora's first change
    };

    bool readState();
    void rebuildEntries();
    [[nodiscard]] const Entry* entry(DisplayID id) const;
    [[nodiscard]] const Entry* online(DisplayID id) const;
    [[nodiscard]] PlatformMode platformMode(const Entry& e, const MutterMode& mode) const;
    [[nodiscard]] DisplayWorld world() const;
    Gamma* gamma(DisplayID id) const;
    void fail(const std::string& what, const MutterError& error) const;

    MutterBus bus_;
    LogFunction log_;
    MutterState state_;
    MutterResources resources_;
    std::int32_t powerSaveMode_ = 0;
    std::vector<Entry> entries_;
    DisplayWorld world_;
    ReconfigurationHandlers handlers_;
    mutable ModeHandles modeHandles_;
    DisplayIDs displayIDs_;
    mutable std::map<DisplayID, Gamma> gamma_;
    mutable std::set<DisplayID> gammaAbsentLogged_;
    std::map<std::string, MutterPlacement> placements_;
    std::unique_ptr<MutterSignalRelay> relay_;
    std::unique_ptr<QDBusServiceWatcher> watcher_;
    bool present_ = true;
};

}  // namespace lumora::wl
