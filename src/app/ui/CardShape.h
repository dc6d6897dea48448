#pragma once

#include <QString>
#include <QStringList>

#include "display/DisplayInfo.h"
#include "lid/LidMode.h"

namespace lumora::ui {

// How a card's brightness slider reaches the display.
enum class BrightnessBinding {
    builtin,   // the panel's backlight
    ddc,       // the monitor's own luminance over DDC/CI
    software,  // dimming through the gamma table
};

// What the program knows about a display beyond its list entry.
struct CardFacts {
    bool switchedOffByUs = false;  // in the list of displays the program switched off
    bool ddcAvailable = false;
    bool hidpiOn = false;
    LidMode lidMode = LidMode::unknown;
    bool canDisconnect = false;
};

// Everything about a display card that decides which widgets it has. A card is rebuilt only
// when this changes; values (levels, colour) are updated in place.
struct CardShape {
    DisplayInfo display;
    QString symbol;
    QStringList badges;
    QString statusText;  // the built-in panel switched off by a closed lid
    bool offerDisconnect = false;
    bool offerConnect = false;
    bool controls = false;  // sliders, mode and more menus, colour: online displays only
    BrightnessBinding brightness = BrightnessBinding::software;
    bool softwareCaption = false;
    bool ddc = false;  // contrast and volume rows, the DDC submenus
    bool hidpi = false;

    friend bool operator==(const CardShape&, const CardShape&) = default;
};

[[nodiscard]] CardShape cardShape(const DisplayInfo& display, const CardFacts& facts);

}  // namespace lumora::ui
