#include "AppDelegate.h"

#include <QCoreApplication>
#include <QObject>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <thread>

#include "Application.h"
#include "CommandOutcome.h"
#include "PanelWindow.h"
#include "Preview.h"
#include "Tray.h"
#include "display/Displays.h"
#include "display/Gamma.h"
#include "log/Log.h"
#include "model/AppModel.h"
#include "platform/Platform.h"
#include "runtime/InstanceChannel.h"
#include "runtime/QtSession.h"
#include "runtime/SignalBridge.h"

namespace lumora::app {

namespace {

// The status file as the model last wrote it; nothing when it cannot be read.
std::optional<std::string> statusFileText(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream text;
    text << in.rdbuf();
    if (!in && !in.eof()) return std::nullopt;
    return text.str();
}

// What the sender of a command learns: its outcome, and the status file when it asked for it.
InstanceChannel::Answer answerFor(const CommandResult& result, bool withStatus,
                                  const std::filesystem::path& statusFile) {
    return {result, withStatus ? statusFileText(statusFile) : std::nullopt};
}

}  // namespace

AppDelegate::AppDelegate(Application& app) : app_(app), connections_(std::make_unique<QObject>()) {}

AppDelegate::~AppDelegate() {
    trayWatch_.reset();
    tray_.reset();
    panelWindow_.reset();
    preview_.reset();
    signals_.reset();
    channel_.reset();
    connections_.reset();
}

std::optional<int> AppDelegate::launch() {
    // An agent without a Dock icon: on macOS the bundle's LSUIElement says so; elsewhere an
    // application has no Dock icon to hide.

    if (app_.commandLine().preview) return startPreview();

    channel_ = std::make_unique<InstanceChannel>(app_.paths().instanceSocket);
    // Requests are served from the event loop, which runs once the launch is over, so the
    // handler never meets a model that has not started.
    const auto listening = channel_->listen(
        [this](const InstanceChannel::Request& request, InstanceChannel::Reply reply) {
            // Answered once the command is finished, status file included.
            auto done = [this, wantsStatus = request.wantsStatus,
                         reply = std::move(reply)](const CommandResult& result) {
                reply(answerFor(result, wantsStatus, app_.paths().statusFile));
            };
            app_.model().handleURL(request.url, std::move(done));
        });
    if (listening == InstanceChannel::Listen::anotherInstance) return deferToRunningAgent();
    if (listening == InstanceChannel::Listen::failed) {
        app_.log().write("url: cannot listen on " + app_.paths().instanceSocket +
                         "; commands from other processes are refused");
    }
    app_.takeOverMachine();

    registerLoginItemOnFirstLaunch();
    app_.model().start();
    started_ = true;
    app_.platform().systemEvents().addObserver(SystemEvent::displayServerLost,
                                               [this] { displayServerLost(); });
    installSignalHandlers();
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit,
                     connections_.get(), [this] { cleanUp(); });
    showPanel();

    if (const auto& url = app_.commandLine().url) {
        // This process is the agent now: nobody waits for an exit status, so the outcome is
        // only told.
        const bool printStatus = app_.commandLine().printStatus;
        app_.model().handleURL(*url, [this, printStatus](const CommandResult& result) {
            (void)reportOutcome(answerFor(result, printStatus, app_.paths().statusFile),
                                printStatus, std::cout, std::cerr);
        });
    }
    return std::nullopt;
}

std::optional<int> AppDelegate::startPreview() {
    app_.takeOverMachine();
    app_.model().refresh();
    preview_ = openPreviewWindow(app_.uiContext());
    std::cout << "WINDOW " << preview_->winId() << std::endl;
    // A coarse timer may fire up to 5 % early.
    QTimer::singleShot(kPreviewMilliseconds, Qt::PreciseTimer, connections_.get(),
                       [] { QCoreApplication::exit(0); });
    return std::nullopt;
}

int AppDelegate::deferToRunningAgent() {
    const auto& url = app_.commandLine().url;
    if (!url) {
        // Launched again (the app grid, the desktop entry): the running agent shows its panel.
        std::ostringstream quiet;
        if (handOverCommand(app_.paths().instanceSocket, kOpenPanelUrl, false, quiet, quiet) == 0) {
            return 0;
        }
        app_.log().write("another Lumora is running; exiting");
        return 0;
    }
    // The agent may hold the lock a moment before it listens.
    for (int attempt = 0; attempt < kHandOverAttempts; ++attempt) {
        if (auto status = handOverCommand(app_.paths().instanceSocket, *url,
                                          app_.commandLine().printStatus, std::cout, std::cerr)) {
            return *status;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(kHandOverRetryMilliseconds));
    }
    std::cerr << "lumora: the running Lumora did not take " << *url << "\n";
    return kHandOverFailed;
}

void AppDelegate::registerLoginItemOnFirstLaunch() {
    // A start-at-login file put there by hand already starts the program.
    if (app_.session().launchAgentInstalled()) return;
    Defaults& defaults = app_.defaults();
    if (defaults.boolean(kLoginItemAskedKey).value_or(false)) return;
    // Asked once only, even when registration fails: the user has the switch in the menu.
    defaults.setBoolean(kLoginItemAskedKey, true);
    (void)app_.session().registerLoginItem();
}

void AppDelegate::installSignalHandlers() {
    // The clean-up runs when the event loop has ended, so that nothing queued (a refresh
    // after the reconnected displays, say) runs after it and undoes part of it.
    signals_ = std::make_unique<SignalBridge>([](int) { QCoreApplication::exit(0); });
    if (!signals_->installed()) {
        app_.log().write("signals: cannot watch SIGTERM, SIGINT and SIGHUP");
    }
}

void AppDelegate::showPanel() {
    if (!app_.showsWindows()) return;
    panelWindow_ = std::make_unique<PanelWindow>(app_.uiContext());
    app_.model().setPanelHandler([this](std::optional<bool> on) { panelWindow_->show(on); });
    tray_ = TrayIcon::create(app_.uiContext());
    if (tray_) {
        app_.log().write("panel: in the system tray; `lumora panel` also opens it as a window");
        return;
    }
    app_.log().write(
        "no system tray; running without an icon (URL commands still work): the panel opens as "
        "a window when Lumora is launched again or by `lumora panel`, and the icon appears "
        "when a tray does");
    watchForTray();
}

void AppDelegate::watchForTray() {
    trayWatch_ = std::make_unique<QTimer>();
    trayWatch_->setInterval(kTrayPollMilliseconds);
    QObject::connect(trayWatch_.get(), &QTimer::timeout, connections_.get(), [this] {
        if (!QSystemTrayIcon::isSystemTrayAvailable()) return;
        tray_ = TrayIcon::create(app_.uiContext());
        if (!tray_) return;
        app_.log().write("panel: a system tray appeared; the icon is shown");
        trayWatch_->stop();
    });
    trayWatch_->start();
}

void AppDelegate::cleanUp() {
    if (!started_ || cleanedUp_) return;
    cleanedUp_ = true;
    trayWatch_.reset();
    tray_.reset();
    panelWindow_.reset();
    AppModel& model = app_.model();
    app_.log().write("Lumora quit");
    model.lid().shutdown();
    model.adaptive().stop();
    model.hidpi().stopAll();
    model.virtualScreens().stopAll();
    // Switched back on first, so that a display dimmed and then switched off gets its own
    // colours back too.
    app_.displays().reconnectAll();
    app_.gamma().resetAll();
    model.writeLastStatus();
    app_.persistForExit();
}

void AppDelegate::displayServerLost() {
    if (!started_ || cleanedUp_) return;
    cleanedUp_ = true;
    app_.log().write("display server lost");
    AppModel& model = app_.model();
    model.rememberServerLoss();
    model.lid().shutdown();
    model.writeLastStatus();
    app_.persistForExit();
    std::_Exit(kDisplayServerLost);
}

}  // namespace lumora::app
