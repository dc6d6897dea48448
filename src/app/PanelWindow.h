#pragma once

#include <memory>
#include <optional>

#include "ui/UiContext.h"

class QWidget;

namespace lumora::app {

// The menu panel as an ordinary window titled "Lumora", for desktops without a tray (and for
// `lumora panel` on any desktop). Made on first use; closing it only hides it.
class PanelWindow {
  public:
    static constexpr const char* kTitle = "Lumora";

    explicit PanelWindow(ui::UiContext context);
    ~PanelWindow();
    PanelWindow(const PanelWindow&) = delete;
    PanelWindow& operator=(const PanelWindow&) = delete;

    // Shows (true), hides (false) or toggles (nothing) the window. Shown, it comes to the
    // front on the primary screen.
    void show(std::optional<bool> on);
    [[nodiscard]] bool visible() const;

  private:
    ui::UiContext context_;
    std::unique_ptr<QWidget> window_;
};

}  // namespace lumora::app
