#include "Application.h"

#include <QApplication>
#include <QCoreApplication>
#include <QEventLoop>
#include <QGuiApplication>
#include <QTimer>
#include <cstdlib>
#include <iostream>
#include <utility>

#include "AppDelegate.h"
#include "PlatformChoice.h"
#include "Preview.h"
#include "UrlOpenEvents.h"
#include "display/Displays.h"
#include "display/Gamma.h"
#include "log/Log.h"
#include "model/AppModel.h"
#include "platform/Platform.h"
#include "runtime/QtScheduler.h"
#include "runtime/QtSession.h"
#include "runtime/SettingsDefaults.h"
#include "runtime/SystemClock.h"
#include "ui/QtOsd.h"
#include "ui/UiContext.h"

namespace lumora::app {

namespace {

// Exit status when there is no machine to control (bad world file, no backend).
constexpr int kNoPlatform = 2;
// Exit status when the panel could not be drawn or written.
constexpr int kRenderFailed = 1;
// A scan reads every control of every monitor over slow I2C, with retries.
constexpr int kDdcScanTimeoutMilliseconds = 10'000;

// Reads the monitors' controls as the running agent does at start, and waits for the answers,
// so that the picture shows the monitors that answer over DDC/CI with their levels.
void scanDdcAndWait(AppModel& model) {
    QEventLoop loop;
    QTimer::singleShot(kDdcScanTimeoutMilliseconds, &loop, &QEventLoop::quit);
    // The model tells before it stores the values: stop once the loop is back.
    const Subscription scanned = model.ddcValues().subscribe(
        [&loop] { QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection); });
    model.ddc().rescan();
    loop.exec();
}

std::unique_ptr<Defaults> makeDefaults(const AppPaths& paths, Log& log) {
    std::unique_ptr<SettingsDefaults> defaults;
#if defined(__APPLE__)
    if (paths.settingsFile.empty()) defaults = SettingsDefaults::userDefaults();
#endif
    if (!defaults) defaults = std::make_unique<SettingsDefaults>(paths.settingsFile);
    defaults->reportFailuresTo(&log);
    return defaults;
}

// The agent without windows has nowhere to show a level.
class HeadlessOsd final : public Osd {
  public:
    void show(DisplayID, double, const std::string&, const std::optional<std::string>&) override {}
};

}  // namespace

Application::Application(CommandLine cli, FrontEnd frontEnd)
    : cli_(std::move(cli)), frontEnd_(std::move(frontEnd)), paths_(AppPaths::forThisProcess()) {
    const bool offscreenFallback =
        frontEnd_.widgets &&
        fellBackOffscreen(frontEnd_, QGuiApplication::platformName().toStdString());
    showsWindows_ = frontEnd_.widgets && !offscreenFallback;

    scheduler_ = std::make_unique<QtScheduler>();
    log_ = std::make_unique<Log>(Log::Options{paths_.logFile, systemLocalTime, &std::cout});
    defaults_ = makeDefaults(paths_, *log_);
    PlatformChoice choice = choosePlatform(cli_, *scheduler_, *log_);
    platform_ = std::move(choice.platform);
    platformError_ = std::move(choice.error);
    // Without a machine to control the process only says why and ends: nothing to log.
    if (platform_ && !frontEnd_.notice.empty()) log_->write(frontEnd_.notice);
    if (platform_ && offscreenFallback) {
        log_->write("the display server cannot be reached; running headless");
    }
#if defined(__APPLE__)
    if (platform_ && cli_.headless) {
        log_->write(
            "headless: no shortcuts and no lumora:// links opened by other applications; "
            "`lumora COMMAND` still reaches the agent");
    }
#endif
    session_ = std::make_unique<QtSession>(
        paths_, QtSession::Launch{QtSession::runningBinary(), cli_.headless}, log_.get());
}

Application::~Application() {
    if (forcedExit_) forcedExit_->delegate.store(nullptr);
    // The views and handlers go first, then the model, then what the model works through.
    delegate_.reset();
    model_.reset();
}

int Application::run() {
    if (!platform_) {
        std::cerr << "lumora: " << platformError_ << "\n";
        return kNoPlatform;
    }
    if (cli_.renderPanel) return renderPanel(*cli_.renderPanel);
    delegate_ = std::make_unique<AppDelegate>(*this);
    if (auto status = delegate_->launch()) {
        persistForExit();
        return *status;
    }
    // The preview shows the panel only; the agent takes URLs the system opens with it.
    UrlOpenEvents urls([this](const std::string& url) {
        if (model_) model_->handleURL(url);
    });
    if (!cli_.preview) QCoreApplication::instance()->installEventFilter(&urls);
    watchForForcedExit();
    const int status = QCoreApplication::exec();
    if (forcedExit_) forcedExit_->delegate.store(nullptr);
    persistForExit();
    return status;
}

// Qt's window-system connection ends the process with exit(1) the moment it breaks ("The X11
// connection broke"), from inside the event loop and before any of ours notices. An exit
// with a failure status while the loop runs is therefore the display server going away, and
// is turned into the agent's own ending. The hook outlives this object (exit handlers cannot
// be removed), so what it reads is one pointer in static storage, cleared when the loop ends:
// the C runtime's hook is the one thing here that outlives the application.
void Application::watchForForcedExit() {
#if defined(__GLIBC__)
    if (cli_.preview) return;
    static ForcedExit cell;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)
    forcedExit_ = &cell;
    forcedExit_->delegate.store(delegate_.get());
    on_exit(
        [](int status, void* argument) {
            auto* watch = static_cast<ForcedExit*>(argument);
            AppDelegate* delegate = watch->delegate.exchange(nullptr);
            if (status != 0 && delegate != nullptr) delegate->displayServerLost();
        },
        forcedExit_);
#endif
}

int Application::renderPanel(const std::filesystem::path& file) {
    takeOverMachine();
    model().refresh();
    scanDdcAndWait(model());
    const bool written = renderPanelToPng(uiContext(), file);
    if (!written) {
        std::cerr << "lumora: cannot write the panel to " << file.string() << "\n";
        return kRenderFailed;
    }
    std::cout << "PANEL " << file.string() << std::endl;
    return 0;
}

Log& Application::log() {
    return *log_;
}

Defaults& Application::defaults() {
    return *defaults_;
}

QtSession& Application::session() {
    return *session_;
}

Displays& Application::displays() {
    if (!displays_)
        displays_ = std::make_unique<Displays>(platform_->displayServer(), *defaults_, *log_);
    return *displays_;
}

Gamma& Application::gamma() {
    if (!gamma_) gamma_ = std::make_unique<Gamma>(platform_->displayServer());
    return *gamma_;
}

AppModel& Application::model() {
    if (model_) return *model_;
    if (showsWindows_) {
        // Where the level shows: the screen of the display when the desktop has it, else the
        // primary screen.
        osd_ = std::make_unique<ui::QtOsd>([](DisplayID) { return std::optional<QRect>(); });
    } else {
        osd_ = std::make_unique<HeadlessOsd>();
    }
    model_ = AppModel::create(
        AppPorts{*platform_, *scheduler_, *osd_, *session_, *defaults_, displays(), *log_});
    return *model_;
}

ui::UiContext Application::uiContext() {
    Platform& platform = *platform_;
    return ui::UiContext{model(),
                         displays(),
                         *session_,
                         paths_.logFile,
                         [] { QCoreApplication::quit(); },
                         [&platform] { platform.input().promptForTrust(); },
                         {}};
}

void Application::takeOverMachine() {
    platform_->attach(*log_);
}

void Application::persistForExit() {
    platform_->persist();
    log_->flush();
}

}  // namespace lumora::app
