#pragma once

#include <QString>
#include <cstdint>
#include <optional>

#include "display/DisplayInfo.h"
#include "input/ShortcutAction.h"
#include "input/ShortcutMap.h"
#include "lid/LidMode.h"
#include "virtual/VirtualScreenConfig.h"

namespace lumora::ui {

// The texts of the panel that follow rules, kept apart from the widgets that show them.

// "Крышка: ?", "Крышка открыта · 112°", "Закрыта, внешний монитор · 3°", "Закрыта · 0°".
[[nodiscard]] QString lidText(LidMode mode, std::optional<std::int64_t> angle);
// The header's lid symbol: the open laptop only while the lid is known to be open.
[[nodiscard]] QString lidSymbol(LidMode mode);
// "ID 2 · вендор 4268 · модель 41234".
[[nodiscard]] QString displayInfoLine(const DisplayInfo& display);
// "1920×1080", with " HiDPI" for a HiDPI screen.
[[nodiscard]] QString virtualSizeText(const VirtualScreenConfig& config);
// The name a screen added from the menu gets: "Lumora 1920×1080".
// The shortcut button's text: the prompt while recording this action, else the binding's
// label as `names` writes it, else "—".
[[nodiscard]] QString shortcutButtonText(ShortcutAction action,
                                         std::optional<ShortcutAction> recording,
                                         const ShortcutMap& shortcuts, KeyNames names);

}  // namespace lumora::ui
