#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace lumora {

// Opaque handle of one global hot-key registration; kNoHotKey means none came back.
using HotKeyHandle = std::uint64_t;
inline constexpr HotKeyHandle kNoHotKey = 0;

struct HotKeyRegistration {
    std::int32_t status = 0;  // 0 ok; anything else: refused (taken or invalid)
    HotKeyHandle handle = kNoHotKey;
};

// What the brightness-key tap hands over, already decoded by the backend.
struct BrightnessKeyEvent {
    enum class Kind {
        key,          // a brightness key went down (auto-repeat included) or up
        tapDisabled,  // the system switched the tap off (too slow, or on the user's behalf)
    };
    Kind kind = Kind::key;
    bool up = false;       // brightness up; otherwise down
    bool pressed = false;  // key down; otherwise key up
    bool fine = false;     // option and shift held (or the platform's equivalent): a fine step
    friend bool operator==(const BrightnessKeyEvent&, const BrightnessKeyEvent&) = default;
};

// A shortcut the desktop binds by name rather than by keys (the desktop portal's global
// shortcuts): the user may bind or change its keys in the desktop's own settings.
struct NamedShortcut {
    std::string name;         // the action's name, the shortcut's id on the desktop
    std::string description;  // shown by the desktop
    bool hasKey = false;      // the stored keys, offered as the preferred trigger
    std::uint32_t keyCode = 0;
    std::uint32_t modifiers = 0;
    std::uint32_t id = 0;  // what the hot-key handler is called with when it is pressed
    friend bool operator==(const NamedShortcut&, const NamedShortcut&) = default;
};

// The keyboard as a global input device: system-wide hot keys, the tap for the brightness
// keys, and the permission the tap needs.
//
// Key codes and modifiers are Lumora's canonical ones, those stored under "shortcuts": the
// Mac virtual key codes (126 up arrow, 11 B, ...) and the hot-key modifier mask (command
// 0x100, shift 0x200, option 0x800, control 0x1000). Each backend maps them to its own.
//
// Threading: every call and every callback on the main thread.
class Input {
  public:
    // Returns true to swallow the key, false to pass it on to the system.
    using TapHandler = std::function<bool(const BrightnessKeyEvent&)>;
    using HotKeyHandler = std::function<void(std::uint32_t id)>;

    virtual ~Input() = default;

    virtual HotKeyRegistration registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                              std::uint32_t id) = 0;
    virtual void unregisterHotKey(HotKeyHandle handle) = 0;
    // Set once by the owner; called with the id of the registration whose keys were pressed.
    virtual void setHotKeyHandler(HotKeyHandler handler) = 0;

    // Where the desktop binds shortcuts itself, the whole set goes at once by name instead of
    // registerHotKey, and the desktop tells which keys each got (name -> the desktop's
    // description of its trigger).
    [[nodiscard]] virtual bool bindsByName() const { return false; }
    virtual void bindByName(const std::vector<NamedShortcut>& /*shortcuts*/) {}
    using TriggersHandler = std::function<void(const std::map<std::string, std::string>&)>;
    virtual void setTriggersHandler(const TriggersHandler& /*handler*/) {}

    // Installs and enables the tap; false when the system refuses it.
    virtual bool startTap(TapHandler handler) = 0;
    virtual void enableTap(bool enabled) = 0;
    // Drops the tap and its handler.
    virtual void stopTap() = 0;

    // Whether the process may tap keyboard events (the accessibility permission on macOS).
    [[nodiscard]] virtual bool isTrusted() const = 0;
    // Asks the system to show its permission prompt; the answer arrives later, if at all.
    virtual void promptForTrust() = 0;
};

}  // namespace lumora
