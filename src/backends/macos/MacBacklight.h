#pragma once

#include "platform/Backlight.h"

namespace lumora::mac {

// The built-in panel's backlight through the private DisplayServices framework; each entry
// point is bound on its own and may be missing.
class MacBacklight final : public Backlight {
  public:
    MacBacklight();

    [[nodiscard]] bool hasGet() const override { return get_ != nullptr; }
    [[nodiscard]] bool hasSet() const override { return set_ != nullptr; }
    [[nodiscard]] bool hasCanChange() const override { return canChange_ != nullptr; }
    std::int32_t get(DisplayID id, float& level) override;
    std::int32_t set(DisplayID id, float level) override;
    bool canChange(DisplayID id) override;

  private:
    using GetBrightness = int (*)(std::uint32_t display, float* level);
    using SetBrightness = int (*)(std::uint32_t display, float level);
    using CanChangeBrightness = bool (*)(std::uint32_t display);

    GetBrightness get_ = nullptr;
    SetBrightness set_ = nullptr;
    CanChangeBrightness canChange_ = nullptr;
};

}  // namespace lumora::mac
