#include "MacHotKeys.h"

namespace lumora::mac {

namespace {

// Signature of Lumora's hot-key IDs: 'L','M','K','Y' packed high byte first. Presses are told
// apart by the number alone.
constexpr OSType kHotKeySignature = 0x4C4D4B59;
// Refusal status when the system accepted a registration but handed back no reference.
constexpr std::int32_t kNoReference = eventInternalErr;

}  // namespace

MacHotKeys::MacHotKeys() {
    const EventTypeSpec pressed{kEventClassKeyboard, kEventHotKeyPressed};
    InstallEventHandler(GetApplicationEventTarget(), NewEventHandlerUPP(&MacHotKeys::onHotKey), 1,
                        &pressed, this, &eventHandler_);
}

MacHotKeys::~MacHotKeys() {
    for (const auto& [handle, ref] : registrations_)
        UnregisterEventHotKey(ref);
    if (eventHandler_) RemoveEventHandler(eventHandler_);
}

HotKeyRegistration MacHotKeys::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                              std::uint32_t id) {
    const EventHotKeyID hotKeyID{kHotKeySignature, id};
    EventHotKeyRef ref = nullptr;
    // eventHotKeyExistsErr (taken by another application) and eventHotKeyInvalidErr are
    // handed on as they are: any non-zero status is a refusal.
    const OSStatus status =
        RegisterEventHotKey(keyCode, modifiers, hotKeyID, GetApplicationEventTarget(), 0, &ref);
    if (status != noErr) return {status, kNoHotKey};
    if (!ref) return {kNoReference, kNoHotKey};
    const HotKeyHandle handle = next_++;
    registrations_.emplace(handle, ref);
    return {noErr, handle};
}

void MacHotKeys::unregisterHotKey(HotKeyHandle handle) {
    auto it = registrations_.find(handle);
    if (it == registrations_.end()) return;
    UnregisterEventHotKey(it->second);
    registrations_.erase(it);
}

OSStatus MacHotKeys::onHotKey(EventHandlerCallRef /*call*/, EventRef event, void* userData) {
    auto* self = static_cast<MacHotKeys*>(userData);
    EventHotKeyID pressed{};
    const OSStatus status = GetEventParameter(event, kEventParamDirectObject, typeEventHotKeyID,
                                              nullptr, sizeof(pressed), nullptr, &pressed);
    if (status == noErr && self->handler_) self->handler_(pressed.id);
    // Handled in every case: the keys belong to Lumora while registered.
    return noErr;
}

}  // namespace lumora::mac
