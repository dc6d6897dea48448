#pragma once

#include <cstdint>
#include <functional>

#include "platform/ModifierFlags.h"

namespace lumora {

// Opaque handle of one global hot-key registration; kNoHotKey means none came back.
using HotKeyHandle = std::uint64_t;
inline constexpr HotKeyHandle kNoHotKey = 0;

// Signature a backend may tag its registrations with where the system asks for one (the
// Carbon hot-key ID pair): 'L','M','K','Y' packed high byte first. Presses are told apart by
// the number alone.
inline constexpr std::uint32_t kHotKeySignature = 0x4C4D4B59;

struct HotKeyRegistration {
    std::int32_t status = 0;  // 0 ok; anything else: refused (taken or invalid)
    HotKeyHandle handle = kNoHotKey;
};

// What the brightness-key tap sees.
enum class SystemEventKind {
    systemDefined,           // a system-defined event (media and brightness keys among them)
    tapDisabledByTimeout,    // the system switched the tap off: its handler was too slow
    tapDisabledByUserInput,  // the system switched the tap off on the user's behalf
    other,                   // anything that could not be read as a system-defined event
};

// A tapped event, reduced to what decoding a brightness key needs. For systemDefined events,
// subtype and data1 are the platform's event fields as they are (on macOS NSEvent's subtype
// and data1); the other kinds carry nothing else.
struct SystemDefinedEvent {
    SystemEventKind kind = SystemEventKind::other;
    std::int32_t subtype = 0;
    std::int64_t data1 = 0;
    ModifierFlags flags;
};

// The keyboard as a global input device: system-wide hot keys, the session-level tap for the
// brightness keys, and the accessibility permission the tap needs. Every call and every
// callback happens on the main thread.
class Input {
  public:
    // Returns true to swallow the event, false to pass it on to the system.
    using TapHandler = std::function<bool(const SystemDefinedEvent&)>;
    using HotKeyHandler = std::function<void(std::uint32_t id)>;

    virtual ~Input() = default;

    // keyCode is the hardware virtual key code; modifiers use the hot-key mask encoding
    // (command 0x100, shift 0x200, option 0x800, control 0x1000) and are passed on unchanged.
    virtual HotKeyRegistration registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                              std::uint32_t id) = 0;
    virtual void unregisterHotKey(HotKeyHandle handle) = 0;
    // Set once by the owner; called with the id of the registration whose keys were pressed.
    virtual void setHotKeyHandler(HotKeyHandler handler) = 0;

    // Installs and enables the tap; false when the system refuses it. The handler sees
    // system-defined events and both tap-disabled notifications until stopTap().
    virtual bool startTap(TapHandler handler) = 0;
    virtual void enableTap(bool enabled) = 0;
    // Drops the tap and its handler.
    virtual void stopTap() = 0;

    // Whether the process may tap keyboard events (the accessibility permission).
    [[nodiscard]] virtual bool isTrusted() const = 0;
    // Asks the system to show its permission prompt; the answer arrives later, if at all.
    virtual void promptForTrust() = 0;
};

}  // namespace lumora
