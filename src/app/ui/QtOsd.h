#pragma once

#include <QRect>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

#include "platform/DisplayServer.h"
#include "platform/Osd.h"

class QPropertyAnimation;
class QTimer;
class QWidget;

namespace lumora::ui {

class OsdPanel;

struct OsdTimings {
    int hideAfterMs = 1400;  // after the last show
    int fadeMs = 300;
};

// The on-screen display: a small dark rounded panel with a symbol, a sixteen-segment level
// bar and a short text, floating above everything, never taking focus or clicks. Repeated
// calls keep it up and move or update it in place; it fades out a while after the last one.
// Main thread only. The panel is made on first use and kept.
class QtOsd final : public Osd {
  public:
    // The screen frame (global coordinates) of a display, or nothing when it has none; the
    // primary screen is used then, and nothing is shown without one.
    using ScreenFrame = std::function<std::optional<QRect>(DisplayID)>;

    using Timings = OsdTimings;

    explicit QtOsd(ScreenFrame screenFrame, Timings timings = {});
    ~QtOsd() override;
    QtOsd(const QtOsd&) = delete;
    QtOsd& operator=(const QtOsd&) = delete;

    void show(DisplayID display, double level, const std::string& symbol,
              const std::optional<std::string>& text) override;

    // The display server's screens: the display's own, else the main display's.
    static ScreenFrame framesOf(const DisplayServer& server);

    // What the panel shows now; a null panel before the first show.
    [[nodiscard]] QWidget* panel() const;
    [[nodiscard]] QString text() const;
    [[nodiscard]] int segments() const;
    [[nodiscard]] QString symbol() const;

  private:
    ScreenFrame screenFrame_;
    Timings timings_;
    std::unique_ptr<OsdPanel> panel_;
    std::unique_ptr<QTimer> hide_;
    QPropertyAnimation* fade_ = nullptr;  // owned by the panel
};

}  // namespace lumora::ui
