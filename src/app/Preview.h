#pragma once

#include <filesystem>
#include <memory>

class QWidget;

namespace lumora::ui {
struct UiContext;
}

namespace lumora::app {

// The menu panel outside the menu bar, for inspection.

// The preview window's content rectangle.
inline constexpr int kPreviewX = 200;
inline constexpr int kPreviewY = 200;
inline constexpr int kPreviewWidth = 380;
inline constexpr int kPreviewHeight = 760;
inline constexpr const char* kPreviewTitle = "Lumora Preview";

// An ordinary titled, closable window with the panel, shown in front.
std::unique_ptr<QWidget> openPreviewWindow(ui::UiContext context);

// The whole panel as the preview shows it, never scrolled, drawn into a PNG; false when it
// could not be written.
bool renderPanelToPng(ui::UiContext context, const std::filesystem::path& file);

}  // namespace lumora::app
