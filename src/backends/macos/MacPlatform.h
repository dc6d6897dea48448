#pragma once

#include <chrono>
#include <memory>

#include "DisplayEnableSwitch.h"
#include "MacAVServices.h"
#include "MacActivity.h"
#include "MacBacklight.h"
#include "MacDisplayServer.h"
#include "MacInput.h"
#include "MacLidSensor.h"
#include "MacPower.h"
#include "MacSystemEvents.h"
#include "MacVirtualDisplays.h"
#include "platform/Platform.h"

namespace lumora::mac {

// Apple publishes no ambient light reading for current Macs: the capability stays absent.
class MacAmbientLight final : public AmbientLight {
  public:
    std::optional<double> lux() override { return std::nullopt; }
};

class MacWallClock final : public WallClock {
  public:
    [[nodiscard]] double utcSeconds() const override {
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    }
};

// The Mac: CoreGraphics displays, IOKit DDC/CI and sensors, private entry points bound at run
// time (their absence is a missing capability), AppKit and Carbon glue. Built and used on
// the main thread.
class MacPlatform final : public Platform {
  public:
    // `applicationEvents`: the process runs the application's event loop (a menu-bar icon),
    // without which hot keys and opened URLs are never delivered.
    explicit MacPlatform(bool applicationEvents);

    [[nodiscard]] std::string name() const override { return "macOS (CoreGraphics)"; }
    [[nodiscard]] Capabilities capabilities() const override { return capabilities_; }

    DisplayServer& displayServer() override { return displays_; }
    Backlight& backlight() override { return backlight_; }
    AVServices& avServices() override { return avServices_; }
    VirtualDisplays& virtualDisplays() override { return virtualDisplays_; }
    Power& power() override { return power_; }
    LidSensor& lidSensor() override { return lid_; }
    SystemEvents& systemEvents() override { return systemEvents_; }
    Input& input() override { return input_; }
    AmbientLight& ambientLight() override { return light_; }
    WallClock& wallClock() override { return clock_; }

  private:
    DisplayEnableSwitch enableSwitch_;
    MacDisplayServer displays_;
    MacBacklight backlight_;
    MacAVServices avServices_;
    MacVirtualDisplays virtualDisplays_;
    MacPower power_;
    MacLidSensor lid_;
    MacSystemEvents systemEvents_;
    MacInput input_;
    MacAmbientLight light_;
    MacWallClock clock_;
    Capabilities capabilities_;
    MacActivity activity_;
};

std::unique_ptr<Platform> makeMacPlatform(bool applicationEvents);

}  // namespace lumora::mac
