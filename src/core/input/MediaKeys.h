#pragma once

#include <functional>

#include "log/Log.h"
#include "platform/Input.h"

namespace lumora {

// Intercepts the keyboard's brightness keys through the platform's tap. The owner's
// onBrightness decides what a key does; this class asks, and swallows the key when the answer
// is true, or passes it to the system (a key-up follows its key-down). Main thread only.
class MediaKeys {
  public:
    // input and log must outlive the object.
    MediaKeys(Input& input, Log& log);
    ~MediaKeys();
    MediaKeys(const MediaKeys&) = delete;
    MediaKeys& operator=(const MediaKeys&) = delete;

    // Installs the tap unless it is already installed; true when the tap is (now) active.
    // Without the accessibility permission: false and nothing logged.
    bool start();
    // Disables and drops the tap; harmless when off.
    void stop();
    [[nodiscard]] bool active() const { return tap_; }

    // (up, fine) -> whether the key was handled and is to be swallowed.
    std::function<bool(bool up, bool fine)> onBrightness;

  private:
    bool handle(const BrightnessKeyEvent& event);

    Input& input_;
    Log& log_;
    bool tap_ = false;
    // Whether the last brightness key-down was swallowed; its key-up follows the same way.
    bool swallowedDown_ = false;
};

}  // namespace lumora
