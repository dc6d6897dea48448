#pragma once

#include <QElapsedTimer>
#include <memory>

#include "ui/UiContext.h"

class QObject;
class QSystemTrayIcon;
class QWidget;

namespace lumora::app {

// The "display" symbol in the system tray; a click opens the menu panel as a frameless popup
// under the icon, and a click outside closes it again.
class TrayIcon {
  public:
    // Nothing when the desktop has no system tray.
    static std::unique_ptr<TrayIcon> create(ui::UiContext context);
    ~TrayIcon();
    TrayIcon(const TrayIcon&) = delete;
    TrayIcon& operator=(const TrayIcon&) = delete;

    // A click on the icon while the popup is open first closes the popup (a click outside
    // it), then reaches the icon: within this time of the close it is that same click.
    static constexpr int kSameClickMilliseconds = 300;

    // Opens the panel under the icon, or closes it when it is open.
    void toggle();

  private:
    explicit TrayIcon(ui::UiContext context);
    void open();

    ui::UiContext context_;
    std::unique_ptr<QSystemTrayIcon> icon_;
    std::unique_ptr<QWidget> popup_;  // made on the first click, then kept following the model
    std::unique_ptr<QObject> hideWatcher_;
    QElapsedTimer sinceHidden_;  // invalid until the popup first closes
};

}  // namespace lumora::app
