#pragma once

#include <functional>
#include <map>
#include <optional>

#include "adaptive/Sun.h"
#include "display/Brightness.h"
#include "display/ColorAdjust.h"
#include "display/Gamma.h"
#include "model/DdcControl.h"
#include "model/Observable.h"
#include "model/Settings.h"
#include "platform/Backlight.h"
#include "platform/Defaults.h"
#include "platform/Osd.h"

namespace lumora {

class Displays;

// How a display's brightness is set.
enum class BrightnessPath {
    backlight,  // the built-in panel's own backlight
    ddc,        // the monitor's luminance over DDC/CI
    software,   // dimming through the gamma ramps
};

// One brightness control for every display, the software colour of each display, and
// dim-to-black. Main thread only.
class BrightnessControl {
  public:
    // The brightness control never takes a software-dimmed screen fully black; only
    // dim-to-black and the "dim" command can.
    static constexpr double kSoftwareDimFloor = 0.02;
    // DDC brightness is written as a percentage, whatever maximum the monitor reports.
    static constexpr std::uint16_t kDdcBrightnessMax = 100;
    static constexpr double kStep = 1.0 / 16;
    static constexpr double kFineStep = 1.0 / 64;
    // Below this level the on-screen display shows the small sun.
    static constexpr double kDimSymbolBelow = 0.3;
    // The card's brightness slider never goes below this in software: a slider must never
    // turn a display fully black.
    static constexpr double kSliderSoftwareFloor = 0.05;
    // A DDC display whose brightness read failed.
    static constexpr double kUnknownDdcBrightness = 0.5;

    struct Deps {
        DdcControl& ddc;
        Displays& displays;
        DisplayServer& server;
        Backlight& backlight;
        Osd& osd;
        Defaults& defaults;
    };

    // Loads the saved colour.
    BrightnessControl(Deps deps, const Signal* willChange);

    [[nodiscard]] const Published<double>& builtinBrightness() const { return builtin_; }
    [[nodiscard]] const Published<ColorMap>& color() const { return color_; }

    [[nodiscard]] BrightnessPath path(DisplayID display) const;
    // The brightness the model believes the display has, 0…1.
    [[nodiscard]] double level(DisplayID display) const;
    // The user's choice: heard by the user-change handler.
    void set(DisplayID display, double level);
    // A level chosen by the program (adaptive brightness), not by the user.
    void setAutomatically(DisplayID display, double level);
    // Called after each brightness the user sets through set(), step() or the slider.
    void setOnUserChange(std::function<void(DisplayID, double)> handler) {
        onUserChange_ = std::move(handler);
    }
    // One key step on the 1/16 (fine: 1/64) grid, with the on-screen display.
    void step(DisplayID display, bool up, bool fine);
    // The card's slider: like set(), with the slider's own floor for software dimming.
    void setFromSlider(DisplayID display, double level);
    void setBuiltin(double level);
    // Reads the panel's level into builtinBrightness (published only when it differs); an
    // unreadable level leaves the old one and gives false.
    bool readBuiltin(DisplayID panel);

    void setColor(DisplayID display, const ColorAdjust& adjust);
    // The display's colour with `dim` replaced; no floor (0 is black).
    void setDim(DisplayID display, double dim);
    // Re-applies the saved colour of the online displays.
    void applyColor();
    // Multiplies the display's colour channels by `tint` on top of the saved colour (the
    // night colour of adaptive brightness); memory only, so a restart starts untinted.
    void setTint(DisplayID display, const std::optional<ChannelGains>& tint);
    void resetColor() { gamma_.resetAll(); }
    // Blacks the display out, or brings it back to the dim it had before.
    void dimToBlack(DisplayID display);

  private:
    [[nodiscard]] ColorAdjust colorOf(DisplayID display) const;

    Deps deps_;
    Brightness brightness_;
    Gamma gamma_;
    Published<double> builtin_;
    Published<ColorMap> color_;
    std::map<DisplayID, ChannelGains> tints_;
    std::function<void(DisplayID, double)> onUserChange_;
    bool automatic_ = false;
    std::map<DisplayID, double> savedDim_;  // memory only: a restart keeps a black screen black
};

}  // namespace lumora
