#include "Application.h"

#include <QApplication>
#include <QCoreApplication>
#include <QEventLoop>
#include <QGuiApplication>
#include <QTimer>
#include <iostream>
#include <utility>

#include "AppDelegate.h"
#include "Preview.h"
#include "display/Displays.h"
#include "display/Gamma.h"
#include "log/Log.h"
#include "model/AppModel.h"
#include "runtime/QtScheduler.h"
#include "runtime/QtSession.h"
#include "runtime/SettingsDefaults.h"
#include "runtime/SystemClock.h"
#include "runtime/WorldWatcher.h"
#include "sim/SimMachine.h"
#include "ui/QtOsd.h"
#include "ui/UiContext.h"

namespace lumora::app {

namespace {

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
    model.rescanDDC();
    loop.exec();
}

std::unique_ptr<Defaults> makeDefaults(const AppPaths& paths) {
#if defined(__APPLE__)
    (void)paths;
    return SettingsDefaults::userDefaults();
#else
    return std::make_unique<SettingsDefaults>(paths.settingsFile);
#endif
}

}  // namespace

Application::Application(CommandLine cli, sim::World world, FrontEnd frontEnd)
    : cli_(std::move(cli)),
      world_(std::move(world)),
      frontEnd_(std::move(frontEnd)),
      paths_(AppPaths::forThisProcess()) {
    const bool offscreenFallback =
        frontEnd_.widgets &&
        fellBackOffscreen(frontEnd_, QGuiApplication::platformName().toStdString());
    showsWindows_ = frontEnd_.widgets && !offscreenFallback;

    scheduler_ = std::make_unique<QtScheduler>();
    log_ = std::make_unique<Log>(Log::Options{paths_.logFile, systemLocalTime, &std::cout});
    if (!frontEnd_.notice.empty()) log_->write(frontEnd_.notice);
    if (offscreenFallback) {
        log_->write("the display server cannot be reached; running headless");
    }
    defaults_ = makeDefaults(paths_);
    session_ = std::make_unique<QtSession>(
        paths_, QtSession::Launch{QtSession::runningBinary(), cli_.headless});
}

Application::~Application() {
    // The views and handlers go first, then the model, then what the model works through.
    delegate_.reset();
    worldWatcher_.reset();
    model_.reset();
}

int Application::run() {
    if (cli_.renderPanel) return renderPanel(*cli_.renderPanel);
    delegate_ = std::make_unique<AppDelegate>(*this);
    if (auto status = delegate_->launch()) {
        persistForExit();
        return *status;
    }
    const int status = QCoreApplication::exec();
    persistForExit();
    return status;
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

sim::SimMachine& Application::machine() {
    if (!machine_) machine_ = std::make_unique<sim::SimMachine>(world_, *scheduler_);
    return *machine_;
}

Displays& Application::displays() {
    if (!displays_)
        displays_ = std::make_unique<Displays>(machine().displayServer(), *defaults_, *log_);
    return *displays_;
}

Gamma& Application::gamma() {
    if (!gamma_) gamma_ = std::make_unique<Gamma>(machine().displayServer());
    return *gamma_;
}

AppModel& Application::model() {
    if (model_) return *model_;
    sim::SimMachine& sim = machine();
    Osd* osd = &sim.osd();  // remembers what it would show: the headless agent has no screen
    if (showsWindows_) {
        // The simulated displays have no place on the real desktop: the level shows on the
        // primary screen.
        osd_ = std::make_unique<ui::QtOsd>([](DisplayID) { return std::optional<QRect>(); });
        osd = osd_.get();
    }
    model_ = AppModel::create(AppPorts{*scheduler_, sim.displayServer(), sim.backlight(),
                                       sim.avServices(), sim.virtualDisplays(), sim.power(),
                                       sim.lidSensor(), sim.systemEvents(), sim.input(), *osd,
                                       *session_, *defaults_, displays(), *log_});
    return *model_;
}

ui::UiContext Application::uiContext() {
    sim::SimMachine& sim = machine();
    return ui::UiContext{model(),
                         displays(),
                         *session_,
                         paths_.logFile,
                         [] { QCoreApplication::quit(); },
                         [&sim] { sim.input().promptForTrust(); },
                         {}};
}

void Application::takeOverMachine() {
    sim::SimMachine& sim = machine();
    if (cli_.stateFile) sim.setStateFile(*cli_.stateFile);
    if (cli_.worldFile && !worldWatcher_) {
        worldWatcher_ = std::make_unique<WorldWatcher>(*cli_.worldFile, world_, sim, *log_);
    }
}

void Application::persistForExit() {
    if (machine_) machine_->writeStateFile();  // nothing unless the machine was taken over
    log_->flush();
}

}  // namespace lumora::app
