#pragma once

#include <optional>
#include <string>

#include "CommandLine.h"
#include "runtime/AppPaths.h"

namespace lumora::app {

// Which Qt application the process runs on, decided before one exists: a QGuiApplication that
// cannot reach its display server aborts the process, so it must not be tried blindly.
struct FrontEnd {
    // A QApplication (tray, panel, on-screen display); otherwise a QCoreApplication.
    bool widgets = false;
    // The value to give QT_QPA_PLATFORM before the QApplication is built; nothing to leave it.
    // A list ending in "offscreen" lets Qt fall back instead of aborting.
    std::optional<std::string> platform;
    // One line for the log when the choice is not what was asked for; empty otherwise.
    std::string notice;
};

// Qt's own platform for drawing without a screen.
inline constexpr const char* kOffscreenPlatform = "offscreen";

FrontEnd chooseFrontEnd(const CommandLine& cli, const AppPaths::Environment& environment);

// Whether Qt ended up on the offscreen fallback of a list chosen above, i.e. the display
// server named in the environment could not be reached.
bool fellBackOffscreen(const FrontEnd& frontEnd, const std::string& platformName);

}  // namespace lumora::app
