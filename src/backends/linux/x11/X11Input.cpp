#include "x11/X11Input.h"

#include <X11/XF86keysym.h>
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <algorithm>

#include "x11/KeyMap.h"
#include "x11/XConnection.h"

namespace lumora::lx {

namespace {

// The modifiers a shortcut consists of; the lock keys and the rest do not count.
constexpr unsigned int kShortcutModifiers = ShiftMask | ControlMask | Mod1Mask | Mod4Mask;

using Keymap = XReply<KeySym, XFree>;
using ModifierMap = XReply<XModifierKeymap, XFreeModifiermap>;

}  // namespace

std::unique_ptr<X11Input> X11Input::open(const std::string& displayName, TraceSink trace) {
    auto connection = XConnection::open(displayName);
    if (!connection) return nullptr;
    return std::unique_ptr<X11Input>(new X11Input(std::move(connection), std::move(trace)));
}

X11Input::X11Input(std::unique_ptr<XConnection> connection, TraceSink trace)
    : connection_(std::move(connection)), trace_(std::move(trace)) {
    ErrorTrap trap(*connection_);
    // A held key then repeats as presses alone, and a shortcut fires once per press.
    Bool supported = False;
    XkbSetDetectableAutoRepeat(connection_->display(), True, &supported);
    readNumLockMask();
}

// Closing the connection lets go of every grab, and of a keyboard frozen for the tap.
X11Input::~X11Input() = default;

int X11Input::connectionFd() const {
    return connection_->fd();
}

void X11Input::trace(const std::string& line) const {
    if (trace_) trace_(line);
}

void X11Input::readNumLockMask() {
    numLockMask_ = 0;
    Display* display = connection_->display();
    const KeyCode numLock = XKeysymToKeycode(display, XK_Num_Lock);
    ModifierMap map(XGetModifierMapping(display));
    if (!map || numLock == 0) return;
    for (int modifier = 0; modifier < 8; ++modifier) {
        for (int i = 0; i < map->max_keypermod; ++i) {
            if (map->modifiermap[modifier * map->max_keypermod + i] == numLock)
                numLockMask_ = 1u << modifier;
        }
    }
}

std::vector<unsigned int> X11Input::lockVariants() const {
    std::vector<unsigned int> variants = {0, LockMask};
    if (numLockMask_ != 0) {
        variants.push_back(numLockMask_);
        variants.push_back(numLockMask_ | LockMask);
    }
    return variants;
}

int X11Input::grab(unsigned int keycode, unsigned int modifiers) {
    if (connection_->lost()) return BadImplementation;
    Display* display = connection_->display();
    ErrorTrap trap(*connection_);
    for (unsigned int lock : lockVariants()) {
        XGrabKey(display, static_cast<int>(keycode), modifiers | lock, connection_->root(), False,
                 GrabModeAsync, GrabModeAsync);
    }
    const int error = trap.sync();
    // Half a shortcut is none: drop the variants that went through.
    if (error != 0) ungrab(keycode, modifiers);
    return error;
}

void X11Input::ungrab(unsigned int keycode, unsigned int modifiers) {
    if (keycode == 0 || connection_->lost()) return;
    ErrorTrap trap(*connection_);
    for (unsigned int lock : lockVariants())
        XUngrabKey(connection_->display(), static_cast<int>(keycode), modifiers | lock,
                   connection_->root());
}

unsigned int X11Input::keycodeFor(std::uint32_t keyCode) const {
    if (connection_->lost()) return 0;
    for (unsigned long keysym : keysymsForKeyCode(keyCode)) {
        if (const KeyCode keycode = XKeysymToKeycode(connection_->display(), keysym))
            return keycode;
    }
    return 0;
}

HotKeyRegistration X11Input::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                            std::uint32_t id) {
    if (keysymsForKeyCode(keyCode).empty()) return {kUnknownKey, kNoHotKey};
    if (connection_->lost()) return {kFailed, kNoHotKey};
    ErrorTrap trap(*connection_);
    const unsigned int keycode = keycodeFor(keyCode);
    if (keycode == 0) return {kNotOnKeyboard, kNoHotKey};
    const unsigned int state = xModifiersFor(modifiers);
    // X would let this client grab the same keys twice; another application could not.
    const bool ours = std::any_of(hotKeys_.begin(), hotKeys_.end(), [&](const HotKey& k) {
        return k.keycode == keycode && k.modifiers == state;
    });
    if (ours) return {kTaken, kNoHotKey};
    const int error = grab(keycode, state);
    drainQueued();
    if (error == BadAccess) return {kTaken, kNoHotKey};
    if (error != 0) return {kFailed, kNoHotKey};
    hotKeys_.push_back(HotKey{nextHandle_, id, keyCode, state, keycode});
    return {0, nextHandle_++};
}

void X11Input::unregisterHotKey(HotKeyHandle handle) {
    auto found = std::find_if(hotKeys_.begin(), hotKeys_.end(),
                              [handle](const HotKey& k) { return k.handle == handle; });
    if (found == hotKeys_.end()) return;
    ungrab(found->keycode, found->modifiers);
    hotKeys_.erase(found);
    drainQueued();
}

void X11Input::setHotKeyHandler(HotKeyHandler handler) {
    hotKeyHandler_ = std::move(handler);
}

bool X11Input::grabTapKeys() {
    if (connection_->lost()) return false;
    Display* display = connection_->display();
    int minKeycode = 0, maxKeycode = 0, perKeycode = 0;
    XDisplayKeycodes(display, &minKeycode, &maxKeycode);
    const int count = maxKeycode - minKeycode + 1;
    Keymap keymap(
        XGetKeyboardMapping(display, static_cast<KeyCode>(minKeycode), count, &perKeycode));
    if (!keymap) return false;
    std::vector<TapKey> keys;
    for (int i = 0; i < count; ++i) {
        for (int level = 0; level < perKeycode; ++level) {
            const KeySym sym = keymap.get()[i * perKeycode + level];
            if (sym == XF86XK_MonBrightnessUp || sym == XF86XK_MonBrightnessDown) {
                keys.push_back(
                    {static_cast<unsigned int>(minKeycode + i), sym == XF86XK_MonBrightnessUp});
                break;
            }
        }
    }
    if (keys.empty()) {
        trace("x11: the keymap has no brightness keys");
        return false;
    }
    ErrorTrap trap(*connection_);
    for (const TapKey& key : keys) {
        XGrabKey(display, static_cast<int>(key.keycode), AnyModifier, connection_->root(), False,
                 GrabModeAsync, GrabModeSync);
    }
    if (trap.sync() != 0) {
        for (const TapKey& key : keys)
            XUngrabKey(display, static_cast<int>(key.keycode), AnyModifier, connection_->root());
        trace("x11: another client holds the brightness keys");
        return false;
    }
    tapKeys_ = std::move(keys);
    return true;
}

void X11Input::ungrabTapKeys(bool passPending) {
    if (!connection_->lost() && !tapKeys_.empty()) {
        ErrorTrap trap(*connection_);
        for (const TapKey& key : tapKeys_) {
            XUngrabKey(connection_->display(), static_cast<int>(key.keycode), AnyModifier,
                       connection_->root());
        }
        // A press not yet handled keeps the keyboard frozen: it goes on to the system now.
        if (passPending) XAllowEvents(connection_->display(), ReplayKeyboard, CurrentTime);
    }
    tapKeys_.clear();
}

bool X11Input::startTap(TapHandler handler) {
    if (!tapKeys_.empty() || grabTapKeys()) {
        tapHandler_ = std::move(handler);
        tapEnabled_ = true;
        drainQueued();
        return true;
    }
    return false;
}

void X11Input::enableTap(bool enabled) {
    if (!tapHandler_ || enabled == tapEnabled_) return;
    // Switched off, the keys go straight to whoever else wants them.
    if (enabled) {
        tapEnabled_ = grabTapKeys();
    } else {
        ungrabTapKeys(true);
        tapEnabled_ = false;
    }
    drainQueued();
}

void X11Input::stopTap() {
    ungrabTapKeys(true);
    tapHandler_ = nullptr;
    tapEnabled_ = false;
    drainQueued();
}

void X11Input::regrabAll() {
    ErrorTrap trap(*connection_);
    for (HotKey& k : hotKeys_)
        ungrab(k.keycode, k.modifiers);
    // A press that arrived before the change is still handled, with the grab made anew.
    const bool tap = !tapKeys_.empty();
    ungrabTapKeys(false);
    readNumLockMask();
    held_.clear();
    for (HotKey& k : hotKeys_) {
        k.keycode = keycodeFor(k.keyCode);
        if (k.keycode != 0 && grab(k.keycode, k.modifiers) != 0) k.keycode = 0;
        if (k.keycode == 0)
            trace("x11: hot key " + std::to_string(k.id) + " lost in a keymap change");
    }
    if (tap) tapEnabled_ = grabTapKeys();
}

void X11Input::dispatchPending() {
    Display* display = connection_->display();
    while (!connection_->lost() && XPending(display) > 0) {
        XEvent event;
        XNextEvent(display, &event);
        handle(event);
    }
}

void X11Input::drainQueued() {
    Display* display = connection_->display();
    while (!connection_->lost() && QLength(display) > 0) {
        XEvent event;
        XNextEvent(display, &event);
        handle(event);
    }
}

void X11Input::handle(XEvent& event) {
    if (event.type == MappingNotify) {
        XRefreshKeyboardMapping(&event.xmapping);
        if (event.xmapping.request != MappingPointer) regrabAll();
        return;
    }
    if (event.type != KeyPress && event.type != KeyRelease) return;
    const XKeyEvent& key = event.xkey;
    const bool pressed = event.type == KeyPress;
    auto tap = std::find_if(tapKeys_.begin(), tapKeys_.end(),
                            [&](const TapKey& t) { return t.keycode == key.keycode; });
    if (tap != tapKeys_.end()) {
        handleTap(*tap, pressed, key.state, key.time);
        return;
    }
    if (!pressed) {
        held_.erase(key.keycode);
        return;
    }
    if (!held_.insert(key.keycode).second) return;  // auto-repeat
    const unsigned int state = key.state & kShortcutModifiers;
    for (const HotKey& k : hotKeys_) {
        if (k.keycode == key.keycode && k.modifiers == state && hotKeyHandler_) {
            const HotKeyHandler handler = hotKeyHandler_;  // it may replace itself
            handler(k.id);
            return;
        }
    }
}

void X11Input::handleTap(const TapKey& key, bool pressed, unsigned int state, unsigned long time) {
    bool consume = false;
    if (tapHandler_ && tapEnabled_) {
        const TapHandler handler = tapHandler_;  // it may stop the tap
        consume = handler(BrightnessKeyEvent{BrightnessKeyEvent::Kind::key, key.up, pressed,
                                             (state & ShiftMask) && (state & Mod1Mask)});
    }
    if (connection_->lost()) return;
    // The keyboard stays frozen until told: a consumed press is ours, a declined one goes on as
    // if the grab were not there. A release only comes after a consumed press.
    XAllowEvents(connection_->display(), consume || !pressed ? AsyncKeyboard : ReplayKeyboard,
                 time);
    XFlush(connection_->display());
}

}  // namespace lumora::lx
