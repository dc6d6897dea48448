#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "ddc/DdcCapabilities.h"
#include "display/DisplayInfo.h"
#include "lid/LidMode.h"
#include "model/BrightnessControl.h"
#include "platform/Capabilities.h"

namespace lumora::ui {

// What the program knows about a display beyond its list entry.
struct CardFacts {
    bool switchedOffByUs = false;  // in the list of displays the program switched off
    BrightnessPath brightness = BrightnessPath::software;  // as the model sets it
    bool hidpiOn = false;
    LidMode lidMode = LidMode::unknown;
    Capabilities can;
    // What the monitor's capabilities string lists; nothing when it gave none that parses.
    std::optional<DdcCapabilities> ddcCapabilities;
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
    BrightnessPath brightness = BrightnessPath::software;
    bool softwareCaption = false;
    bool ddc = false;  // the DDC rows and submenus below, as far as the monitor lists them
    bool contrast = false;
    bool volume = false;
    bool power = false;
    // The "Вход" menu: name and VCP 0x60 value of each input source; empty: no menu.
    std::vector<std::pair<QString, std::uint16_t>> inputs;
    bool hidpi = false;
    bool modes = false;   // the mode menu
    bool colour = false;  // the fold-out colour controls (software colour needs gamma)

    friend bool operator==(const CardShape&, const CardShape&) = default;
};

[[nodiscard]] CardShape cardShape(const DisplayInfo& display, const CardFacts& facts);

}  // namespace lumora::ui
