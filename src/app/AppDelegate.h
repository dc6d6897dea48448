#pragma once

#include <memory>
#include <optional>

class QObject;
class QTimer;
class QWidget;

namespace lumora::app {

class Application;
class InstanceChannel;
class PanelWindow;
class SignalBridge;
class TrayIcon;

// The process's way in and out: sets the agent up, refuses to run twice, registers the login
// item on first launch, starts the model, takes URL commands and termination signals, and on
// every way out gives the displays back as they were.
class AppDelegate {
  public:
    static constexpr const char* kLoginItemAskedKey = "loginItemAsked";
    // The preview window is for a look, then the process ends by itself.
    static constexpr int kPreviewMilliseconds = 15'000;
    // A second start that lost the race for the lock finds the agent's socket within this.
    static constexpr int kHandOverAttempts = 40;
    static constexpr int kHandOverRetryMilliseconds = 50;
    // Exit status of a hand-over that the running agent did not finish in time.
    static constexpr int kHandOverFailed = 1;
    // Without a tray the desktop is asked this often whether one has appeared (an extension
    // enabled after login), so the icon comes without a restart.
    static constexpr int kTrayPollMilliseconds = 5'000;
    // Exit status when the display server went away under the agent: a service manager
    // restarts it on the next server.
    static constexpr int kDisplayServerLost = 3;
    // What a second launch without a command asks of the running agent.
    static constexpr const char* kOpenPanelUrl = "lumora://panel?on=1";

    explicit AppDelegate(Application& app);
    ~AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    // The launch sequence. An exit status when the process is to end now; nothing when the
    // event loop is to run (the agent, or the preview until its timer ends it).
    std::optional<int> launch();

    // The clean-up sequence; runs once, when the event loop has ended (the quit button or a
    // termination signal).
    void cleanUp();
    // The display server has gone, and the displays with it: nothing is left to restore there.
    // Says so, gives back what the agent holds, writes the last status and ends the process
    // with kDisplayServerLost at once (the event loop may already be unusable). Does nothing
    // before the agent has started or once it is cleaning up.
    void displayServerLost();

  private:
    std::optional<int> startPreview();
    // This user's agent runs already: hand the URL over, or refuse to start.
    int deferToRunningAgent();
    void registerLoginItemOnFirstLaunch();
    void installSignalHandlers();
    // The tray icon where the desktop has a tray, the panel window always (relaunch,
    // `lumora panel`).
    void showPanel();
    void watchForTray();

    Application& app_;
    std::unique_ptr<QObject> connections_;  // ends the Qt connections made here with us
    std::unique_ptr<InstanceChannel> channel_;
    std::unique_ptr<SignalBridge> signals_;
    std::unique_ptr<TrayIcon> tray_;
    std::unique_ptr<PanelWindow> panelWindow_;
    std::unique_ptr<QTimer> trayWatch_;
    std::unique_ptr<QWidget> preview_;
    bool started_ = false;
    bool cleanedUp_ = false;
};

}  // namespace lumora::app
