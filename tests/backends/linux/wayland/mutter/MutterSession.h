#pragma once

#include <QCoreApplication>
#include <QDBusConnection>
#include <QEventLoop>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "backends/linux/wayland/support/ServerProcess.h"

namespace lumora::wltest {

// QtDBus delivers signals through the event loop of a QCoreApplication.
inline QCoreApplication& qtApplication() {
    static int argc = 1;
    static char name[] = "test_linux_mutter";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    return app;
}

inline bool processEventsUntil(const std::function<bool()>& condition, double seconds = 5.0) {
    qtApplication();
    return waitFor(
        [&] {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
            return condition();
        },
        seconds);
}

// One logical monitor as gdbus prints GetCurrentState: the independent witness.
struct WitnessLogical {
    int x = 0;
    int y = 0;
    bool primary = false;
    std::vector<std::string> connectors;
};

// A private session bus with, on it: a headless Mutter with two 1920×1080 virtual monitors,
// nothing, or the stand-in of fixtures/mutter_displayconfig.py (its JSON parameters given).
class MutterSession {
  public:
    enum class Kind { mutter, emptyBus, standIn };

    explicit MutterSession(Kind kind = Kind::mutter, const std::string& parameters = "{}") {
        if (kind == Kind::standIn && !hasDbusmock()) {
            problem_ = "python3-dbusmock is not installed for /usr/bin/python3";
            return;
        }
        for (const char* program : {"mutter", "gdbus"}) {
            if (!installed(program)) {
                problem_ = std::string(program) +
                           " is not installed (Debian packages mutter libglib2.0-bin)";
                return;
            }
        }
        problem_ = bus_.problem();
        const auto& dir = bus_.dir();
        if (!problem_.empty() || kind == Kind::emptyBus) return;
        const std::string address = "DBUS_SESSION_BUS_ADDRESS=" + bus_.address();
        if (kind == Kind::standIn) {
            startStandIn_ = [this, address, parameters, dir] {
                mutter_.emplace(
                    std::vector<std::string>{"/usr/bin/python3", "-m", "dbusmock", "--template",
                                             kStandIn, "--parameters", parameters},
                    std::vector<std::string>{address}, dir / "standin.log");
            };
            startStandIn_();
        } else {
            mutter_.emplace(std::vector<std::string>{"mutter", "--headless", "--wayland",
                                                     "--no-x11", "--virtual-monitor", "1920x1080",
                                                     "--virtual-monitor", "1920x1080"},
                            std::vector<std::string>{address, "XDG_RUNTIME_DIR=" + dir.string(),
                                                     "HOME=" + dir.string(),
                                                     "XDG_CONFIG_HOME=" + (dir / "config").string(),
                                                     "-WAYLAND_DISPLAY", "-DISPLAY"},
                            dir / "mutter.log");
        }
        if (!waitFor([this] { return !logicalMonitors().empty(); }, PrivateBus::kStartSeconds))
            problem_ = "the display service did not start; see the logs in " + dir.string();
    }

    [[nodiscard]] const std::string& problem() const { return problem_; }
    // Ends the compositor now; the bus stays.
    void kill() { mutter_.reset(); }
    // The stand-in only: stops it and starts it again, as an update restarts a service.
    bool restartStandIn() {
        kill();
        startStandIn_();
        return waitFor([this] { return !logicalMonitors().empty(); }, PrivateBus::kStartSeconds);
    }
    // For clients of the session: the bus address and the compositor's runtime folder.
    [[nodiscard]] const std::string& address() const { return bus_.address(); }
    [[nodiscard]] std::filesystem::path runtimeDir() const { return bus_.dir(); }

    QDBusConnection connect(const QString& name) const {
        qtApplication();
        return QDBusConnection::connectToBus(QString::fromStdString(address()), name);
    }

    std::string gdbus(const std::string& method, const std::string& args = "") const {
        return commandOutput("DBUS_SESSION_BUS_ADDRESS='" + address() +
                             "' gdbus call --session --dest org.gnome.Mutter.DisplayConfig "
                             "--object-path /org/gnome/Mutter/DisplayConfig --method " +
                             method + " " + args + " 2>&1");
    }

    std::vector<WitnessLogical> logicalMonitors() const {
        const std::string state = gdbus("org.gnome.Mutter.DisplayConfig.GetCurrentState");
        static const std::regex logical(
            R"(\((-?\d+), (-?\d+), [0-9.]+, (?:uint32 )?\d+, (true|false), \[((?:\('[^']*', '[^']*', '[^']*', '[^']*'\)(?:, )?)*)\])");
        static const std::regex monitorId(R"(\('([^']*)', '[^']*', '[^']*', '[^']*'\))");
        std::vector<WitnessLogical> result;
        for (auto it = std::sregex_iterator(state.begin(), state.end(), logical);
             it != std::sregex_iterator(); ++it) {
            WitnessLogical lm{std::stoi((*it)[1]), std::stoi((*it)[2]), (*it)[3] == "true", {}};
            const std::string specs = (*it)[4];
            for (auto s = std::sregex_iterator(specs.begin(), specs.end(), monitorId);
                 s != std::sregex_iterator(); ++s)
                lm.connectors.push_back((*s)[1]);
            result.push_back(lm);
        }
        return result;
    }

    std::optional<WitnessLogical> logicalOf(const std::string& connector) const {
        for (const auto& lm : logicalMonitors()) {
            for (const auto& c : lm.connectors) {
                if (c == connector) return lm;
            }
        }
        return std::nullopt;
    }

  private:
    static constexpr const char* kStandIn = LUMORA_WAYLAND_FIXTURES "/mutter_displayconfig.py";
    PrivateBus bus_;
    std::optional<ChildProcess> mutter_;  // or its stand-in; stopped before the bus
    std::function<void()> startStandIn_;
    std::string problem_;
};

}  // namespace lumora::wltest
