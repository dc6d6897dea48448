#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/Input.h"
#include "x11/TraceSink.h"

union _XEvent;  // Xlib's XEvent

namespace lumora::lx {

class XConnection;

// Global hot keys and the brightness-key tap through key grabs on the root window, on a
// connection of its own (its own fd, so keys are read even while the display connection is
// busy, and a frozen keyboard never waits on display work).
//
// Hot keys: each combination is grabbed as is and with Num Lock and Caps Lock on, so the lock
// keys never stop a shortcut. The brightness keys are grabbed with any modifiers in the
// synchronous mode: the keyboard waits until the tap's handler has decided, then the key is
// consumed or replayed to whoever would have had it. Key releases come only after a consumed
// press (a replayed key is no longer ours) and are told to the handler, whose answer no
// longer matters. After a keyboard mapping change every grab is made again.
//
// The owner watches connectionFd() and calls dispatchPending() on the main thread.
class X11Input final : public Input {
  public:
    // Statuses of a refused registration.
    static constexpr std::int32_t kUnknownKey = 1;     // not in the key-code table
    static constexpr std::int32_t kNotOnKeyboard = 2;  // the keymap has no such key
    static constexpr std::int32_t kTaken = 3;          // another client holds the combination
    static constexpr std::int32_t kFailed = 4;         // the server refused otherwise or is gone

    // Nothing when the server cannot be reached. Empty name: $DISPLAY.
    static std::unique_ptr<X11Input> open(const std::string& displayName, TraceSink trace = {});
    ~X11Input() override;

    HotKeyRegistration registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                      std::uint32_t id) override;
    void unregisterHotKey(HotKeyHandle handle) override;
    void setHotKeyHandler(HotKeyHandler handler) override;

    // False when the keymap has no brightness keys or another client grabs them.
    bool startTap(TapHandler handler) override;
    void enableTap(bool enabled) override;
    void stopTap() override;

    // X lets any client of the session grab keys: nothing to ask for.
    [[nodiscard]] bool isTrusted() const override { return true; }
    void promptForTrust() override {}

    [[nodiscard]] int connectionFd() const;
    void dispatchPending();

  private:
    struct HotKey {
        HotKeyHandle handle = kNoHotKey;
        std::uint32_t id = 0;
        std::uint32_t keyCode = 0;   // canonical
        unsigned int modifiers = 0;  // X modifier state
        unsigned int keycode = 0;    // 0 while the keymap lacks the key or the grab failed
    };
    struct TapKey {
        unsigned int keycode = 0;
        bool up = false;
    };

    X11Input(std::unique_ptr<XConnection> connection, TraceSink trace);

    // The key code of the first of the key's keysyms the keymap has; 0 for none.
    [[nodiscard]] unsigned int keycodeFor(std::uint32_t keyCode) const;
    // Grabs the combination with every lock state; the X error of the first refusal, or 0.
    int grab(unsigned int keycode, unsigned int modifiers);
    void ungrab(unsigned int keycode, unsigned int modifiers);
    [[nodiscard]] std::vector<unsigned int> lockVariants() const;
    bool grabTapKeys();
    // `passPending`: a press the tap has not decided on goes on to the system.
    void ungrabTapKeys(bool passPending);
    // The keymap changed: keys may sit on other key codes and Num Lock on another modifier.
    void regrabAll();
    void readNumLockMask();
    void handle(::_XEvent& event);
    void handleTap(const TapKey& key, bool pressed, unsigned int state, unsigned long time);
    // Handles what round trips of a call have queued, so no key waits for the next read.
    void drainQueued();
    void trace(const std::string& line) const;

    std::unique_ptr<XConnection> connection_;
    TraceSink trace_;
    unsigned int numLockMask_ = 0;
    std::vector<HotKey> hotKeys_;
    HotKeyHandle nextHandle_ = 1;
    HotKeyHandler hotKeyHandler_;
    std::set<unsigned int> held_;  // hot-key key codes down, so auto-repeat fires once
    TapHandler tapHandler_;
    bool tapEnabled_ = false;
    std::vector<TapKey> tapKeys_;  // grabbed brightness keys
};

}  // namespace lumora::lx
