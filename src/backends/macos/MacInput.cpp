#include "MacInput.h"

#include <ApplicationServices/ApplicationServices.h>

#include "CFRef.h"

namespace lumora::mac {

HotKeyRegistration MacInput::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                            std::uint32_t id) {
    return hotKeys_.registerHotKey(keyCode, modifiers, id);
}

void MacInput::unregisterHotKey(HotKeyHandle handle) {
    hotKeys_.unregisterHotKey(handle);
}

void MacInput::setHotKeyHandler(HotKeyHandler handler) {
    hotKeys_.setHandler(std::move(handler));
}

bool MacInput::startTap(TapHandler handler) {
    return tap_.start(std::move(handler));
}

void MacInput::enableTap(bool enabled) {
    tap_.enable(enabled);
}

void MacInput::stopTap() {
    tap_.stop();
}

bool MacInput::isTrusted() const {
    return AXIsProcessTrusted();
}

void MacInput::promptForTrust() {
    const void* keys[] = {kAXTrustedCheckOptionPrompt};
    const void* values[] = {kCFBooleanTrue};
    CFRef<CFDictionaryRef> options(CFDictionaryCreate(kCFAllocatorDefault, keys, values, 1,
                                                      &kCFTypeDictionaryKeyCallBacks,
                                                      &kCFTypeDictionaryValueCallBacks));
    // The answer comes later through isTrusted(); this call only shows the prompt.
    AXIsProcessTrustedWithOptions(options.get());
}

}  // namespace lumora::mac
