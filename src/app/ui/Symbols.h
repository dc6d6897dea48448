#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QSize>
#include <QString>

namespace lumora::ui {

// Lumora's own monochrome symbols, drawn black on a 24×24 grid and tinted when rendered. The
// names are the symbol names the rest of the program uses ("sun.max.fill", "trash", ...).

// Whether a symbol of that name is bundled.
[[nodiscard]] bool hasSymbol(const QString& name);
// The symbol at `size` logical pixels in `tint`, sharp at `devicePixelRatio`; a null pixmap for
// an unknown name.
[[nodiscard]] QPixmap symbolPixmap(const QString& name, QSize size, const QColor& tint,
                                   qreal devicePixelRatio = 2.0);
// The symbol in the usual icon sizes; an empty icon for an unknown name.
[[nodiscard]] QIcon symbolIcon(const QString& name, const QColor& tint);

}  // namespace lumora::ui
