#include "MacKeyTap.h"

#include "TappedEventFields.h"

namespace lumora::mac {

MacKeyTap::~MacKeyTap() {
    stop();
}

bool MacKeyTap::start(Input::TapHandler handler) {
    if (tap_) stop();
    const CGEventMask systemDefined = CGEventMaskBit(kSystemDefinedEventType);
    tap_ = CFRef<CFMachPortRef>(CGEventTapCreate(kCGSessionEventTap, kCGHeadInsertEventTap,
                                                 kCGEventTapOptionDefault, systemDefined,
                                                 &MacKeyTap::onEvent, this));
    if (!tap_) return false;
    source_ = CFRef<CFRunLoopSourceRef>(
        CFMachPortCreateRunLoopSource(kCFAllocatorDefault, tap_.get(), 0));
    if (!source_) {
        CFMachPortInvalidate(tap_.get());
        tap_.reset();
        return false;
    }
    handler_ = std::move(handler);
    // Common modes: the keys also work while a menu is being tracked.
    CFRunLoopAddSource(CFRunLoopGetMain(), source_.get(), kCFRunLoopCommonModes);
    CGEventTapEnable(tap_.get(), true);
    return true;
}

void MacKeyTap::enable(bool enabled) {
    if (tap_) CGEventTapEnable(tap_.get(), enabled);
}

void MacKeyTap::stop() {
    if (tap_) {
        CGEventTapEnable(tap_.get(), false);
        if (source_)
            CFRunLoopRemoveSource(CFRunLoopGetMain(), source_.get(), kCFRunLoopCommonModes);
        CFMachPortInvalidate(tap_.get());
    }
    source_.reset();
    tap_.reset();
    handler_ = nullptr;
}

CGEventRef MacKeyTap::onEvent(CGEventTapProxy /*proxy*/, CGEventType type, CGEventRef event,
                              void* userInfo) {
    auto* self = static_cast<MacKeyTap*>(userInfo);
    const auto decoded = decodeTappedEvent(tappedEventFields(type, event));
    if (!decoded || !self->handler_) return event;
    const bool swallow = self->handler_(*decoded);
    // The tap-disabled notifications are never dropped; only a handled key is.
    if (decoded->kind == BrightnessKeyEvent::Kind::key && swallow) return nullptr;
    return event;
}

}  // namespace lumora::mac
