#pragma once

#include "CardShape.h"
#include "UiContext.h"

class QMenu;

namespace lumora::ui {

// The card's menus, filled afresh each time they open so they always show the current modes
// and displays.

// "Разрешение": the modes of the display, or of its backing virtual display while HiDPI is on,
// under "HiDPI" and "Обычные"; the current one marked "✓ ".
void fillModeMenu(QMenu& menu, UiContext& context, DisplayID display);
// The HiDPI switch, "Сделать главным", "Зеркалировать на", the DDC submenus for a display
// that answers over DDC/CI, and the information line.
void fillMoreMenu(QMenu& menu, UiContext& context, const CardShape& shape);

}  // namespace lumora::ui
