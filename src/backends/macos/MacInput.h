#pragma once

#include "MacHotKeys.h"
#include "MacKeyTap.h"
#include "platform/Input.h"

namespace lumora::mac {

// Hot keys, the brightness-key tap and the accessibility permission the tap needs.
class MacInput final : public Input {
  public:
    HotKeyRegistration registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                      std::uint32_t id) override;
    void unregisterHotKey(HotKeyHandle handle) override;
    void setHotKeyHandler(HotKeyHandler handler) override;

    bool startTap(TapHandler handler) override;
    void enableTap(bool enabled) override;
    void stopTap() override;

    [[nodiscard]] bool isTrusted() const override;
    void promptForTrust() override;

  private:
    MacHotKeys hotKeys_;
    MacKeyTap tap_;
};

}  // namespace lumora::mac
