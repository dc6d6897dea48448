#pragma once

#include <map>

#include "display/ColorAdjust.h"
#include "lid/LidConfig.h"
#include "platform/Defaults.h"
#include "platform/Types.h"

namespace lumora {

// The defaults keys the application model owns, and their readers and writers. A value that
// cannot be decoded counts as absent and gives the default, silently.
inline constexpr const char* kColorAdjustKey = "colorAdjust";
inline constexpr const char* kLidConfigKey = "lidConfig";
inline constexpr const char* kPreventSleepKey = "preventSleepWithExternal";
inline constexpr const char* kBrightnessKeysKey = "brightnessKeys";
inline constexpr const char* kRestoreAfterWakeKey = "restoreAfterWake";
// When (UTC seconds) the agent ended because its display server went away; the next start
// within kResumeWindowSeconds puts back what the new server does not know.
inline constexpr const char* kResumeAfterServerLossKey = "resumeAfterServerLoss";
inline constexpr double kResumeWindowSeconds = 600;

using ColorMap = std::map<DisplayID, ColorAdjust>;

// JSON data: an object from the display id in decimal to a ColorAdjust. Not JSON, not an
// object, or any value that is not a complete ColorAdjust: empty (as a decoder of the whole
// map would fail). Member names that are not a decimal 32-bit display id are dropped.
ColorMap loadColorAdjust(const Defaults& defaults);
// Skips the store when a value is not a finite number (it could not be read back).
void saveColorAdjust(Defaults& defaults, const ColorMap& color);

// JSON data of a LidConfig; the default configuration when absent or undecodable.
LidConfig loadLidConfig(const Defaults& defaults);
void saveLidConfig(Defaults& defaults, const LidConfig& config);

// A boolean; false when absent or of another type.
bool loadPreventSleep(const Defaults& defaults);
// Read as an object so that absence shows: true unless a boolean false is stored.
bool loadBrightnessKeys(const Defaults& defaults);
// The same: true unless a boolean false is stored.
bool loadRestoreAfterWake(const Defaults& defaults);

}  // namespace lumora
