#include "sim/SimInput.h"

#include <algorithm>

namespace lumora::sim {

SimInput::SimInput(bool trusted) : trusted_(trusted) {}

HotKeyRegistration SimInput::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                            std::uint32_t id) {
    std::lock_guard lock(mutex_);
    // The system gives a combination to one registration at a time, this process's own
    // included.
    bool ours = std::any_of(live_.begin(), live_.end(), [&](const Live& l) {
        return l.registration.keyCode == keyCode && l.registration.modifiers == modifiers;
    });
    if (ours || taken_.count({keyCode, modifiers}) != 0) return {kHotKeyExists, kNoHotKey};
    HotKeyHandle handle = nextHandle_++;
    live_.push_back({handle, {keyCode, modifiers, id}});
    return {0, handle};
}

void SimInput::unregisterHotKey(HotKeyHandle handle) {
    std::lock_guard lock(mutex_);
    std::erase_if(live_, [&](const Live& l) { return l.handle == handle; });
}

void SimInput::setHotKeyHandler(HotKeyHandler handler) {
    std::lock_guard lock(mutex_);
    hotKeyHandler_ = std::move(handler);
}

bool SimInput::startTap(TapHandler handler) {
    std::lock_guard lock(mutex_);
    if (refuseTap_) return false;
    tapHandler_ = std::move(handler);
    tapEnabled_ = true;
    return true;
}

void SimInput::enableTap(bool enabled) {
    std::lock_guard lock(mutex_);
    if (tapHandler_) tapEnabled_ = enabled;
}

void SimInput::stopTap() {
    std::lock_guard lock(mutex_);
    tapHandler_ = nullptr;
    tapEnabled_ = false;
}

bool SimInput::isTrusted() const {
    std::lock_guard lock(mutex_);
    return trusted_;
}

void SimInput::promptForTrust() {
    std::lock_guard lock(mutex_);
    ++trustPrompts_;
}

void SimInput::takeByAnotherApp(std::uint32_t keyCode, std::uint32_t modifiers) {
    std::lock_guard lock(mutex_);
    taken_.insert({keyCode, modifiers});
}

void SimInput::refuseTap(bool refuse) {
    std::lock_guard lock(mutex_);
    refuseTap_ = refuse;
}

void SimInput::setTrusted(bool trusted) {
    std::lock_guard lock(mutex_);
    trusted_ = trusted;
}

std::vector<SimInput::Registration> SimInput::registrations() const {
    std::lock_guard lock(mutex_);
    std::vector<Registration> out;
    for (const Live& l : live_)
        out.push_back(l.registration);
    return out;
}

void SimInput::press(std::uint32_t id) {
    HotKeyHandler handler;
    {
        std::lock_guard lock(mutex_);
        handler = hotKeyHandler_;
    }
    if (handler) handler(id);
}

bool SimInput::pressKeys(std::uint32_t keyCode, std::uint32_t modifiers) {
    std::uint32_t id = 0;
    {
        std::lock_guard lock(mutex_);
        auto it = std::find_if(live_.begin(), live_.end(), [&](const Live& l) {
            return l.registration.keyCode == keyCode && l.registration.modifiers == modifiers;
        });
        if (it == live_.end()) return false;
        id = it->registration.id;
    }
    press(id);
    return true;
}

bool SimInput::sendBrightnessKey(bool up, bool pressed, bool fine) {
    TapHandler handler;
    {
        std::lock_guard lock(mutex_);
        if (!tapEnabled_) return false;
        handler = tapHandler_;
    }
    return handler && handler(BrightnessKeyEvent{BrightnessKeyEvent::Kind::key, up, pressed, fine});
}

bool SimInput::disableTap() {
    TapHandler handler;
    {
        std::lock_guard lock(mutex_);
        if (!tapHandler_) return false;
        tapEnabled_ = false;
        handler = tapHandler_;
    }
    return handler(BrightnessKeyEvent{BrightnessKeyEvent::Kind::tapDisabled});
}

bool SimInput::tapInstalled() const {
    std::lock_guard lock(mutex_);
    return static_cast<bool>(tapHandler_);
}

bool SimInput::tapEnabled() const {
    std::lock_guard lock(mutex_);
    return tapEnabled_;
}

int SimInput::trustPrompts() const {
    std::lock_guard lock(mutex_);
    return trustPrompts_;
}

}  // namespace lumora::sim
