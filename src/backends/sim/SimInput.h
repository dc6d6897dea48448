#pragma once

#include <cstdint>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

#include "platform/Input.h"

namespace lumora::sim {

// The keyboard of the simulated machine: hot keys that other applications may hold, a
// brightness-key tap the system may refuse or switch off, and the accessibility permission.
// Handlers run on the calling thread, outside the lock, as the main thread would run them.
class SimInput final : public Input {
  public:
    // What RegisterEventHotKey answers for a combination that is already registered.
    static constexpr std::int32_t kHotKeyExists = -9878;

    struct Registration {
        std::uint32_t keyCode = 0;
        std::uint32_t modifiers = 0;
        std::uint32_t id = 0;
        friend bool operator==(const Registration&, const Registration&) = default;
    };

    explicit SimInput(bool trusted);

    HotKeyRegistration registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                      std::uint32_t id) override;
    void unregisterHotKey(HotKeyHandle handle) override;
    void setHotKeyHandler(HotKeyHandler handler) override;
    bool startTap(TapHandler handler) override;
    void enableTap(bool enabled) override;
    void stopTap() override;
    [[nodiscard]] bool isTrusted() const override;
    void promptForTrust() override;

    // Scripting: another application holds this combination; registering it is refused.
    void takeByAnotherApp(std::uint32_t keyCode, std::uint32_t modifiers);
    // The system refuses to create the tap from now on (or accepts again).
    void refuseTap(bool refuse);
    // The user grants or withdraws the permission.
    void setTrusted(bool trusted);

    // Live registrations of this process, in the order they were made.
    [[nodiscard]] std::vector<Registration> registrations() const;
    // Delivers a press of this id through the hot-key handler, registered or not.
    void press(std::uint32_t id);
    // The user presses the combination; false when this process has not registered it.
    bool pressKeys(std::uint32_t keyCode, std::uint32_t modifiers);

    // A brightness key through the tap; true when it was swallowed. A key that finds no
    // installed and enabled tap goes to the system (false).
    bool sendBrightnessKey(bool up, bool pressed, bool fine = false);
    // The system switches the tap off and tells its handler so; returns whether the handler
    // swallowed the notification.
    bool disableTap();

    [[nodiscard]] bool tapInstalled() const;
    [[nodiscard]] bool tapEnabled() const;
    [[nodiscard]] int trustPrompts() const;

  private:
    struct Live {
        HotKeyHandle handle = kNoHotKey;
        Registration registration;
    };

    mutable std::mutex mutex_;
    bool trusted_;
    bool refuseTap_ = false;
    std::set<std::pair<std::uint32_t, std::uint32_t>> taken_;
    std::vector<Live> live_;
    HotKeyHandle nextHandle_ = 1;
    HotKeyHandler hotKeyHandler_;
    TapHandler tapHandler_;
    bool tapEnabled_ = false;
    int trustPrompts_ = 0;
};

}  // namespace lumora::sim
