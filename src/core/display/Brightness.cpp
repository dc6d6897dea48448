#include "display/Brightness.h"

#include <cmath>

namespace lumora {

namespace {

constexpr std::int32_t kBacklightOK = 0;

}  // namespace

std::optional<float> Brightness::builtin(DisplayID id) {
    if (!backlight_.hasGet()) return std::nullopt;
    float level = 0;
    if (backlight_.get(id, level) != kBacklightOK) return std::nullopt;
    // A reading that is no number says nothing about the panel.
    if (std::isnan(level)) return std::nullopt;
    return level < 0 ? 0.0f : (level > 1 ? 1.0f : level);
}

bool Brightness::setBuiltin(DisplayID id, float level) {
    if (!backlight_.hasSet()) return false;
    const float clamped = !(level > 0) ? 0.0f : (level > 1 ? 1.0f : level);
    return backlight_.set(id, clamped) == kBacklightOK;
}

}  // namespace lumora
