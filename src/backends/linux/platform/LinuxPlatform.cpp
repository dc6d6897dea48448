#include "platform/LinuxPlatform.h"

#include <QDBusConnection>
#include <QSocketNotifier>
#include <QTimer>
#include <chrono>
#include <cstdlib>
#include <vector>

#include "hw/DisplayBuses.h"
#include "hw/IioLightSensor.h"
#include "hw/LinuxAVServices.h"
#include "hw/SysfsBacklight.h"
#include "log/Log.h"
#include "logind/LidSwitchInhibitor.h"
#include "logind/LinuxLidSensor.h"
#include "logind/LogindBacklightWriter.h"
#include "logind/LogindClient.h"
#include "logind/LogindPower.h"
#include "logind/LogindSystemEvents.h"
#include "platform/DrmConnectors.h"
#include "platform/DrmDisplayServer.h"
#include "platform/Placeholders.h"
#if defined(LUMORA_HAVE_X11)
#include "x11/X11DisplayServer.h"
#include "x11/X11DisplaySleep.h"
#include "x11/X11Input.h"
#endif
#if defined(LUMORA_HAVE_MUTTER)
#include "wayland/mutter/MutterDisplayServer.h"
#include "wayland/mutter/SessionBusNames.h"
#endif
#if defined(LUMORA_HAVE_WLROOTS)
#include "wayland/wlroots/WlrootsDisplayServer.h"
#endif
#if defined(LUMORA_HAVE_PORTAL)
#include "portal/PortalShortcuts.h"
#endif
#include "wayland/common/WaylandSession.h"
#if defined(LUMORA_HAVE_WAYLAND_WATCH)
#include "watch/CompositorWatch.h"
#endif

namespace lumora::lx {

namespace {

const std::filesystem::path kSysfs = "/sys";
// Without a display server to announce hot-plugs, the kernel's connectors are read this often.
constexpr int kKernelPollMilliseconds = 2000;

std::optional<std::string> environment(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    if (value == nullptr || *value == '\0') return std::nullopt;
    return std::string(value);
}

bool anyGamma(const DisplayServer& server) {
    for (DisplayID id : server.onlineIDs()) {
        if (server.gammaRampSize(id) > 0) return true;
    }
    return false;
}

class SystemWallClock final : public WallClock {
  public:
    [[nodiscard]] double utcSeconds() const override {
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    }
};

class LinuxPlatform final : public Platform {
  public:
    LinuxPlatform(Scheduler& scheduler, Log& log) : log_(log) {
        const LogFunction logLine = [&log](const std::string& line) { log.write(line); };
        logind_ = std::make_shared<LogindClient>(QDBusConnection::systemBus(), logLine);
        const LinuxSession session = LinuxSession::fromEnvironment(environment);
        chooseDisplays(session, logLine);
#if defined(LUMORA_HAVE_WAYLAND_WATCH)
        if (session.waylandDisplay) {
            compositor_ = wl::CompositorWatch::connect(*session.waylandDisplay);
            if (compositor_) {
                watch(compositor_->fd(), [this] {
                    if (!compositor_->alive()) serverLost();
                });
            }
        }
#endif
#if defined(LUMORA_HAVE_PORTAL)
        // Wayland grabs no keys for a client: the desktop binds them through its portal.
        if (!input_ && session.waylandDisplay) {
            if (auto portal = PortalShortcuts::connect(QDBusConnection::sessionBus(), logLine)) {
                input_ = std::move(portal);
                displayCapabilities_.globalKeys = true;
            }
        }
#endif
        if (!input_) input_ = std::make_unique<NoInput>();

        LinuxAVServices::Options av;
        av.displayFor = [](const std::string& connector) {
            return drmDisplayFor(kSysfs, connector);
        };
        av.log = logLine;
        av_ = std::make_unique<LinuxAVServices>(std::move(av));
        ddcBuses_ = !findDisplayBuses(kSysfs).empty();

        writer_ = std::make_unique<LogindBacklightWriter>(logind_);
        SysfsBacklight::Options backlight;
        if (writer_->available()) {
            backlight.setter = [writer = writer_.get()](const std::string& device,
                                                        std::uint32_t raw) {
                return writer->setBrightness(device, raw);
            };
        }
        backlight_ = std::make_unique<SysfsBacklight>(std::move(backlight));

        power_ = std::make_unique<LogindPower>(logind_, std::move(displayPower_));
        lid_ = std::make_unique<LinuxLidSensor>(logind_);
        events_ = std::make_unique<LogindSystemEvents>(logind_);
        (void)scheduler;
    }

    [[nodiscard]] std::string name() const override {
        return "Linux: " + displayName_ + (logind_->available() ? ", logind" : ", no logind");
    }

    [[nodiscard]] Capabilities capabilities() const override {
        Capabilities c = displayCapabilities_;
#if defined(LUMORA_HAVE_MUTTER)
        if (mutter_ && !mutter_->present()) {
            c.setMode = c.setMain = c.mirror = c.enableDisable = false;
        }
#endif
        if (gammaFollowsDisplays_) c.gamma = anyGamma(*displays_);
        c.virtualDisplays = false;
        c.lidAngle = lid_->hasHingeSensor();
        c.lidSwitch = lid_->hasLidSwitch();
        c.backlight = backlight_->hasGet();
        c.ddc = ddcBuses_;
        c.displaySleep = power_->canSleepDisplays();
        c.systemSleep = c.idleInhibit = logind_->available();
        c.ambientLight = light_.available();
        return c;
    }

    DisplayServer& displayServer() override {
        return *displays_;
    }
    Backlight& backlight() override {
        return *backlight_;
    }
    AVServices& avServices() override {
        return *av_;
    }
    VirtualDisplays& virtualDisplays() override {
        return virtual_;
    }
    Power& power() override {
        return *power_;
    }
    LidSensor& lidSensor() override {
        return *lid_;
    }
    SystemEvents& systemEvents() override {
        return *events_;
    }
    Input& input() override {
        return *input_;
    }
    AmbientLight& ambientLight() override {
        return light_;
    }
    WallClock& wallClock() override {
        return clock_;
    }

    // While the agent runs its lid logic, logind must not act on the lid behind its back.
    void attach(Log& /*log*/) override {
        if (!lid_->available() || lidInhibitor_) return;
        lidInhibitor_ = std::make_unique<LidSwitchInhibitor>(logind_);
        lidInhibitor_->take();
    }
    // The lid goes back to logind before the process ends, however it ends.
    void persist() override {
        if (lidInhibitor_) lidInhibitor_->release();
    }

  private:
    // The display server has gone: its sockets stay readable at their end, so they are watched
    // no more, and the application hears it once.
    void serverLost() {
        if (serverLost_) return;
        serverLost_ = true;
        for (auto& notifier : notifiers_)
            notifier->setEnabled(false);
        events_->post(SystemEvent::displayServerLost);
    }

    void watch(int fd, std::function<void()> dispatch) {
        if (fd < 0) return;
        auto notifier = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
        QObject::connect(notifier.get(), &QSocketNotifier::activated,
                         [dispatch = std::move(dispatch)] { dispatch(); });
        notifiers_.push_back(std::move(notifier));
    }

    void chooseDisplays(const LinuxSession& session, const LogFunction& logLine) {
        if (session.waylandDisplay) {
            wl::SessionEnvironment env;
            env.waylandDisplay = *session.waylandDisplay;
            env.currentDesktop = session.desktop;
#if defined(LUMORA_HAVE_WLROOTS)
            env.globals = wl::advertisedGlobals(*session.waylandDisplay);
#endif
#if defined(LUMORA_HAVE_MUTTER)
            env.busNames = wl::sessionBusNames(QDBusConnection::sessionBus());
#endif
            const wl::WaylandSession kind = wl::detectWaylandSession(env);
#if defined(LUMORA_HAVE_MUTTER)
            if (kind == wl::WaylandSession::gnome) {
                if (auto mutter =
                        wl::MutterDisplayServer::create(QDBusConnection::sessionBus(), logLine)) {
                    auto* m = mutter.get();
                    mutter_ = m;
                    displayPower_.sleep = [m] {
                        return m->sleepDisplays()
                                   ? PowerRequest{true, {}}
                                   : PowerRequest{false, "Mutter PowerSaveMode failed"};
                    };
                    displayPower_.wake = [m] { m->wakeDisplays(); };
                    displays_ = std::move(mutter);
                    displayName_ = "GNOME (Mutter DisplayConfig)";
                    displayCapabilities_.setMode = displayCapabilities_.setMain = true;
                    displayCapabilities_.mirror = displayCapabilities_.enableDisable = true;
                    gammaFollowsDisplays_ = true;
                    return;
                }
            }
#endif
#if defined(LUMORA_HAVE_WLROOTS)
            if (kind == wl::WaylandSession::wlroots) {
                if (auto wlr =
                        wl::WlrootsDisplayServer::connect(*session.waylandDisplay, logLine)) {
                    auto* w = wlr.get();
                    watch(w->connectionFd(), [w] { w->dispatchPending(); });
                    displays_ = std::move(wlr);
                    displayName_ = "wlroots (output management)";
                    displayCapabilities_.setMode = displayCapabilities_.enableDisable = true;
                    gammaFollowsDisplays_ = true;
                    return;
                }
            }
#endif
            useKernel("Wayland (" + std::string(wl::sessionName(kind)) +
                      "): monitors from the kernel, no display configuration");
            return;
        }
#if defined(LUMORA_HAVE_X11)
        if (session.x11Display) {
            if (auto x11 = X11DisplayServer::open(*session.x11Display, logLine)) {
                auto* server = x11.get();
                server->onConnectionLost([this] { serverLost(); });
                watch(server->connectionFd(), [server] { server->dispatchPending(); });
                displayName_ = "X11 (" + server->randrVersion() + ")";
                displays_ = std::move(x11);
                displayCapabilities_.setMode = displayCapabilities_.setMain = true;
                displayCapabilities_.mirror = displayCapabilities_.enableDisable = true;
                displayCapabilities_.gamma = displayCapabilities_.pointer = true;
                if (auto input = X11Input::open(*session.x11Display, logLine)) {
                    auto* keys = input.get();
                    watch(keys->connectionFd(), [keys] { keys->dispatchPending(); });
                    input_ = std::move(input);
                    displayCapabilities_.globalKeys = displayCapabilities_.brightnessKeyTap = true;
                }
                dpms_ = X11DisplaySleep::open(*session.x11Display);
                if (dpms_ && dpms_->available()) {
                    auto* dpms = dpms_.get();
                    displayPower_.sleep = [dpms] { return dpms->sleepNow(); };
                    displayPower_.wake = [dpms] { dpms->wake(); };
                }
                return;
            }
        }
#endif
        useKernel("monitors from the kernel, no display server");
    }

    void useKernel(const std::string& what) {
        auto drm = std::make_unique<DrmDisplayServer>(kSysfs);
        auto* server = drm.get();
        poll_ = std::make_unique<QTimer>();
        QObject::connect(poll_.get(), &QTimer::timeout, [server] { server->refresh(); });
        poll_->start(kKernelPollMilliseconds);
        displays_ = std::move(drm);
        displayName_ = what;
    }

    Log& log_;
    std::shared_ptr<LogindClient> logind_;
    std::unique_ptr<DisplayServer> displays_;
    std::string displayName_;
    Capabilities displayCapabilities_;
    bool gammaFollowsDisplays_ = false;
    DisplayPowerHooks displayPower_;
#if defined(LUMORA_HAVE_X11)
    std::unique_ptr<X11DisplaySleep> dpms_;
#endif
    std::unique_ptr<Input> input_;
    std::unique_ptr<LinuxAVServices> av_;
    IioLightSensor light_;
    SystemWallClock clock_;
    bool ddcBuses_ = false;
    std::unique_ptr<LogindBacklightWriter> writer_;
    std::unique_ptr<SysfsBacklight> backlight_;
    std::unique_ptr<LogindPower> power_;
    std::unique_ptr<LinuxLidSensor> lid_;
    std::unique_ptr<LogindSystemEvents> events_;
    std::unique_ptr<LidSwitchInhibitor> lidInhibitor_;
    NoVirtualDisplays virtual_;
#if defined(LUMORA_HAVE_WAYLAND_WATCH)
    std::unique_ptr<wl::CompositorWatch> compositor_;
#endif
#if defined(LUMORA_HAVE_MUTTER)
    wl::MutterDisplayServer* mutter_ = nullptr;  // the display server, when it is Mutter
#endif
    std::vector<std::unique_ptr<QSocketNotifier>> notifiers_;
    std::unique_ptr<QTimer> poll_;
    bool serverLost_ = false;
};

}  // namespace

LinuxSession LinuxSession::fromEnvironment(
    const std::function<std::optional<std::string>(const std::string&)>& variable) {
    return LinuxSession{variable("DISPLAY"), variable("WAYLAND_DISPLAY"),
                        variable("XDG_CURRENT_DESKTOP").value_or("")};
}

DisplayBackend chooseDisplayBackend(const LinuxSession& session) {
    return session.x11Display && !session.waylandDisplay ? DisplayBackend::x11
                                                         : DisplayBackend::kernel;
}

std::unique_ptr<Platform> makeLinuxPlatform(Scheduler& scheduler, Log& log) {
    return std::make_unique<LinuxPlatform>(scheduler, log);
}

}  // namespace lumora::lx
