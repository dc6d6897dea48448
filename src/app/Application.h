#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "CommandLine.h"
#include "FrontEnd.h"
#include "runtime/AppPaths.h"

namespace lumora {
class AppModel;
class Defaults;
class Displays;
class Gamma;
class Log;
class Osd;
class Platform;
namespace ui {
struct UiContext;
}
}  // namespace lumora

namespace lumora::app {

class AppDelegate;
class QtScheduler;
class QtSession;

// The composition root. Builds the backend (the platform the command line chose), the
// services and the application model once, and tears them down in the reverse order. The expensive
// pieces are built on first use, so a second start that is refused builds little more than the log.
//
// Build it on the main thread after the Qt application object, and destroy it before that.
class Application {
  public:
    // Chooses the machine to control (see choosePlatform); run() says when there is none.
    Application(CommandLine cli, FrontEnd frontEnd);
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    // Runs the program the command line asks for and returns its exit status.
    int run();

    [[nodiscard]] const CommandLine& commandLine() const { return cli_; }
    [[nodiscard]] const AppPaths& paths() const { return paths_; }
    // Windows can be shown: a QApplication on a reachable display server.
    [[nodiscard]] bool showsWindows() const { return showsWindows_; }

    Log& log();
    Defaults& defaults();
    QtSession& session();
    Platform& platform() { return *platform_; }
    Displays& displays();
    Gamma& gamma();
    // Created on first use and kept for the life of the process.
    AppModel& model();
    // What the panel's views need; the quit button ends the event loop.
    ui::UiContext uiContext();

    // This process is the agent (or shows the panel): the backend starts what it does only
    // for the agent (the simulated machine: its state file and world-file watching).
    void takeOverMachine();
    // What the backend writes out, and every log line on disk: the last step before exit.
    void persistForExit();

  private:
    int renderPanel(const std::filesystem::path& file);
    void watchForForcedExit();

    struct ForcedExit {
        std::atomic<AppDelegate*> delegate{nullptr};
    };

    CommandLine cli_;
    FrontEnd frontEnd_;
    bool showsWindows_ = false;
    AppPaths paths_;
    // Destroyed bottom-up: whatever refers to a member is declared after it.
    std::unique_ptr<QtScheduler> scheduler_;
    std::unique_ptr<Log> log_;
    std::unique_ptr<Defaults> defaults_;
    std::unique_ptr<QtSession> session_;
    std::unique_ptr<Platform> platform_;
    std::string platformError_;  // why there is no platform
    std::unique_ptr<Displays> displays_;
    std::unique_ptr<Gamma> gamma_;
    std::unique_ptr<Osd> osd_;  // the on-screen display when windows can be shown
    std::shared_ptr<AppModel> model_;
    std::unique_ptr<AppDelegate> delegate_;
    ForcedExit* forcedExit_ = nullptr;  // the exit hook's cell, in static storage
};

}  // namespace lumora::app
