#include "input/MediaKeys.h"

namespace lumora {

MediaKeys::MediaKeys(Input& input, Log& log) : input_(input), log_(log) {}

MediaKeys::~MediaKeys() {
    stop();
}

bool MediaKeys::start() {
    if (tap_) return true;
    // The settings section asks for the permission; nothing to log here.
    if (!input_.isTrusted()) return false;
    if (!input_.startTap([this](const BrightnessKeyEvent& e) { return handle(e); })) {
        log_.write("brightness keys: event tap refused");
        return false;
    }
    tap_ = true;
    log_.write("brightness keys: on");
    return true;
}

void MediaKeys::stop() {
    if (!tap_) return;
    input_.enableTap(false);
    input_.stopTap();
    tap_ = false;
}

bool MediaKeys::handle(const BrightnessKeyEvent& event) {
    if (event.kind == BrightnessKeyEvent::Kind::tapDisabled) {
        // A slow callback or user input switched the tap off; until it is back on, the keys
        // would reach the system untouched.
        if (tap_) input_.enableTap(true);
        return false;
    }
    if (!event.pressed) return swallowedDown_;
    if (!onBrightness) {
        swallowedDown_ = false;
        return false;
    }
    swallowedDown_ = onBrightness(event.up, event.fine);
    return swallowedDown_;
}

}  // namespace lumora
