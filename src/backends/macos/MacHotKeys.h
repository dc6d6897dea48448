#pragma once

#include <Carbon/Carbon.h>

#include <map>

#include "platform/Input.h"

namespace lumora::mac {

// System-wide hot keys through the Carbon event manager. Key codes and modifier masks are
// the Mac virtual key codes and Carbon's own mask, so they pass through unchanged.
class MacHotKeys {
  public:
    MacHotKeys();
    ~MacHotKeys();
    MacHotKeys(const MacHotKeys&) = delete;
    MacHotKeys& operator=(const MacHotKeys&) = delete;

    HotKeyRegistration registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                      std::uint32_t id);
    void unregisterHotKey(HotKeyHandle handle);
    void setHandler(Input::HotKeyHandler handler) { handler_ = std::move(handler); }

  private:
    static OSStatus onHotKey(EventHandlerCallRef call, EventRef event, void* userData);

    EventHandlerRef eventHandler_ = nullptr;
    Input::HotKeyHandler handler_;
    std::map<HotKeyHandle, EventHotKeyRef> registrations_;
    HotKeyHandle next_ = kNoHotKey + 1;
};

}  // namespace lumora::mac
