#pragma once

#include <QString>

class QWidget;

namespace lumora::ui {

// Draws `widget` with its children into a PNG at twice its logical size, sharp for review on
// any screen. Lays the widget out first when it was never shown. False when the file could not
// be written.
bool renderToPng(QWidget& widget, const QString& path);

}  // namespace lumora::ui
