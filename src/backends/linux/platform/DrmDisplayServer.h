#pragma once

#include <filesystem>
#include <map>
#include <memory>

#include "platform/DisplayServer.h"
#include "platform/DrmConnectors.h"

namespace lumora::lx {

// The displays as the kernel knows them, for sessions whose display server Lumora cannot
// drive (a Wayland compositor without a supported interface, a text console): lists the
// connected monitors with their EDID identity, so DDC/CI, the backlight and the lid work,
// and offers no configuration, no gamma and no pointer.
//
// Main thread; refresh() re-reads the connectors and reports what changed.
class DrmDisplayServer final : public DisplayServer {
  public:
    explicit DrmDisplayServer(std::filesystem::path sysfsRoot = "/sys");

    // Re-reads the connectors; handlers hear of displays that came or went.
    void refresh();

    [[nodiscard]] std::vector<DisplayID> onlineIDs() const override;
    [[nodiscard]] DisplayID mainDisplay() const override;
    [[nodiscard]] bool isBuiltin(DisplayID id) const override;
    [[nodiscard]] bool isAsleep(DisplayID) const override { return false; }
    [[nodiscard]] std::uint32_t vendor(DisplayID id) const override;
    [[nodiscard]] std::uint32_t model(DisplayID id) const override;
    [[nodiscard]] std::uint32_t serial(DisplayID id) const override;
    [[nodiscard]] double rotation(DisplayID) const override { return 0; }
    [[nodiscard]] Rect bounds(DisplayID) const override { return {}; }
    [[nodiscard]] Size physicalSize(DisplayID id) const override;
    [[nodiscard]] std::optional<PlatformMode> currentMode(DisplayID) const override {
        return std::nullopt;
    }
    [[nodiscard]] std::vector<PlatformMode> allModes(DisplayID) const override { return {}; }
    [[nodiscard]] DisplayID mirrorSource(DisplayID) const override { return 0; }
    std::unique_ptr<DisplayConfiguration> beginConfiguration() override;
    [[nodiscard]] std::size_t gammaRampSize(DisplayID) const override { return 0; }
    ConfigStatus setGamma(DisplayID, const GammaRamps&) override { return kConfigUnavailable; }
    void resetGamma(DisplayID) override {}
    [[nodiscard]] std::vector<Screen> screens() const override;
    [[nodiscard]] std::optional<Point> pointerLocation() const override { return std::nullopt; }
    int addReconfigurationHandler(ReconfigurationHandler handler) override;
    void removeReconfigurationHandler(int registration) override;

  private:
    [[nodiscard]] const DrmConnector* find(DisplayID id) const;

    std::filesystem::path sysfsRoot_;
    std::vector<DrmConnector> connected_;
    std::map<int, ReconfigurationHandler> handlers_;
    int nextHandler_ = 1;
};

}  // namespace lumora::lx
