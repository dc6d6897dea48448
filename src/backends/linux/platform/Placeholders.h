#pragma once

#include "platform/Input.h"
#include "platform/VirtualDisplays.h"

namespace lumora::lx {

// Linux has no general facility for virtual displays.
class NoVirtualDisplays final : public VirtualDisplays {
  public:
    [[nodiscard]] bool available() const override { return false; }
    std::unique_ptr<VirtualDisplayHandle> create(const VirtualDisplayDescriptor&) override {
        return nullptr;
    }
};

// A session whose keyboard Lumora cannot reach globally (Wayland): every hot key is refused
// and there is no tap.
class NoInput final : public Input {
  public:
    static constexpr std::int32_t kUnavailable = 1;
    HotKeyRegistration registerHotKey(std::uint32_t, std::uint32_t, std::uint32_t) override {
        return {kUnavailable, kNoHotKey};
    }
    void unregisterHotKey(HotKeyHandle) override {}
    void setHotKeyHandler(HotKeyHandler) override {}
    bool startTap(TapHandler) override { return false; }
    void enableTap(bool) override {}
    void stopTap() override {}
    [[nodiscard]] bool isTrusted() const override { return true; }
    void promptForTrust() override {}
};

}  // namespace lumora::lx
