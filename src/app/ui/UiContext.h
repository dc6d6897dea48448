#pragma once

#include <QUrl>
#include <filesystem>
#include <functional>

#include "display/Displays.h"
#include "input/Shortcut.h"
#include "model/AppModel.h"
#include "platform/Session.h"

namespace lumora::ui {

// What the panel's views work with: the model and the few things the application owns beside
// it. Everything referenced must outlive the views.
struct UiContext {
    AppModel& model;
    Displays& displays;
    Session& session;  // the start-at-login switch
    std::filesystem::path logFile;
    std::function<void()> quit;            // "Выйти"
    std::function<void()> promptForTrust;  // shows the system's accessibility prompt
    // Opens a file in its default application; QDesktopServices when empty.
    std::function<void(const QUrl&)> openUrl;
    // Shortcuts read ⌃⌥⇧⌘ on a Mac and Ctrl+Alt+Shift+Super elsewhere.
#ifdef Q_OS_MACOS
    KeyNames keyNames = KeyNames::symbols;
#else
    KeyNames keyNames = KeyNames::words;
#endif
};

}  // namespace lumora::ui
