#pragma once

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/DisplayServer.h"

namespace lumora::test {

// A display server that passes every call to another one; test doubles derive from it and
// override only the calls they change.
class ForwardingDisplayServer : public DisplayServer {
  public:
    explicit ForwardingDisplayServer(DisplayServer& inner) : inner_(inner) {}

    std::vector<DisplayID> onlineIDs() const override { return inner_.onlineIDs(); }
    DisplayID mainDisplay() const override { return inner_.mainDisplay(); }
    bool isBuiltin(DisplayID id) const override { return inner_.isBuiltin(id); }
    bool isAsleep(DisplayID id) const override { return inner_.isAsleep(id); }
    std::uint32_t vendor(DisplayID id) const override { return inner_.vendor(id); }
    std::uint32_t model(DisplayID id) const override { return inner_.model(id); }
    std::uint32_t serial(DisplayID id) const override { return inner_.serial(id); }
    double rotation(DisplayID id) const override { return inner_.rotation(id); }
    Rect bounds(DisplayID id) const override { return inner_.bounds(id); }
    Size physicalSize(DisplayID id) const override { return inner_.physicalSize(id); }
    std::optional<PlatformMode> currentMode(DisplayID id) const override {
        return inner_.currentMode(id);
    }
    std::vector<PlatformMode> allModes(DisplayID id) const override { return inner_.allModes(id); }
    DisplayID mirrorSource(DisplayID id) const override { return inner_.mirrorSource(id); }
    std::unique_ptr<DisplayConfiguration> beginConfiguration() override {
        return inner_.beginConfiguration();
    }
    std::size_t gammaRampSize(DisplayID id) const override { return inner_.gammaRampSize(id); }
    ConfigStatus setGamma(DisplayID id, const GammaRamps& ramps) override {
        return inner_.setGamma(id, ramps);
    }
    void resetGamma(DisplayID id) override { inner_.resetGamma(id); }
    std::vector<Screen> screens() const override { return inner_.screens(); }
    std::optional<Point> pointerLocation() const override { return inner_.pointerLocation(); }
    int addReconfigurationHandler(ReconfigurationHandler handler) override {
        return inner_.addReconfigurationHandler(std::move(handler));
    }
    void removeReconfigurationHandler(int id) override { inner_.removeReconfigurationHandler(id); }

  protected:
    DisplayServer& inner_;
};

}  // namespace lumora::test
