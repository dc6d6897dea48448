#include "model/AppModel.h"

#include <algorithm>
#include <utility>

#include "model/AdaptiveLink.h"

namespace lumora {

std::shared_ptr<AppModel> AppModel::create(AppPorts ports) {
    return std::make_shared<AppModel>(Passkey{}, ports);
}

AppModel::AppModel(Passkey, AppPorts ports)
    : ports_(ports),
      ddc_(DdcControl::create(
          DdcControl::Deps{ports.scheduler, ports.platform.displayServer(),
                           ports.platform.avServices(), ports.displays, ports.defaults, ports.log},
          &objectWillChange_)),
      brightness_(BrightnessControl::Deps{*ddc_, ports.displays, ports.platform.displayServer(),
                                          ports.platform.backlight(), ports.osd, ports.defaults},
                  &objectWillChange_),
      lid_(LidController::create(
          loadLidConfig(ports.defaults),
          LidController::Deps{ports.scheduler, ports.platform.displayServer(), ports.displays,
                              ports.platform.backlight(), ports.platform.power(),
                              ports.platform.lidSensor(), ports.platform.systemEvents(),
                              ports.defaults, ports.log})),
      adaptiveLink_(std::make_unique<AdaptiveLink>(*this)),
      adaptive_(AdaptiveBrightness::create(AdaptiveBrightness::Deps{
          ports.scheduler, ports.defaults, ports.log, ports.platform.ambientLight(),
          ports.platform.wallClock(), *adaptiveLink_})),
      virtualScreens_(ports.displays, ports.platform.virtualDisplays(), ports.defaults, ports.log),
      hidpi_(ports.displays, ports.platform.virtualDisplays(), ports.scheduler, ports.defaults,
             ports.log),
      hotkeys_(ports.platform.input(), ports.scheduler, ports.log),
      mediaKeys_(ports.platform.input(), ports.log),
      burst_(ports.scheduler, {[this] {
                                   refresh();
                                   brightness_.applyColor();
                               },
                               [this] {
                                   ddc_->rescan();
                                   hidpi_.reconcile();
                               }}) {
    // Loading assigns the initial values; nobody can have subscribed yet.
    lidConfig_.set(lid_->machine().config());
    shortcuts_.set(loadShortcuts(ports_.defaults));
    preventSleepWithExternal_.set(loadPreventSleep(ports_.defaults));
    brightnessKeys_.set(loadBrightnessKeys(ports_.defaults));
    restoreAfterWake_.set(loadRestoreAfterWake(ports_.defaults));
    ddc_->setRestoring(restoreAfterWake_.get());
    accessibilityOK_.set(ports_.platform.input().isTrusted());
    launchAgentInstalled_ = ports_.session.launchAgentInstalled();
}

AppModel::~AppModel() {
    if (reconfiguration_) {
        ports_.platform.displayServer().removeReconfigurationHandler(*reconfiguration_);
    }
    for (SystemEvents::Token token : wakeObservers_)
        ports_.platform.systemEvents().removeObserver(token);
}

void AppModel::start() {
    if (started_) return;
    started_ = true;
    const std::weak_ptr<AppModel> weak = weak_from_this();
    WorkQueue& main = ports_.scheduler.mainQueue();

    ports_.log.write("Lumora " + ports_.session.version() + " start");

    virtualScreens_.startEnabled();
    virtualConfigs_.set(virtualScreens_.configs());

    // The controller calls back from inside its tick; the refresh runs after it.
    lid_->setOnChange([weak, &main] {
        main.post([weak] {
            if (auto self = weak.lock()) self->refresh();
        });
    });
    lid_->start();

    hidpi_.reconcile();

    hotkeys_.onAction = [weak](ShortcutAction action) {
        if (auto self = weak.lock()) self->perform(action);
    };
    ports_.platform.input().setTriggersHandler(
        [weak](const std::map<std::string, std::string>& triggers) {
            auto self = weak.lock();
            if (!self) return;
            std::map<ShortcutAction, std::string> byAction;
            for (const auto& [name, trigger] : triggers) {
                if (auto action = shortcutActionFromRaw(name)) byAction[*action] = trigger;
            }
            self->desktopTriggers_.set(std::move(byAction));
        });
    // Where the session offers no global keys, nothing is registered (and nothing is
    // reported as taken by another application).
    if (capabilities().globalKeys) hotkeys_.registerShortcuts(shortcuts_.get());

    mediaKeys_.onBrightness = [weak](bool up, bool fine) {
        auto self = weak.lock();
        return self ? self->brightnessKeyPressed(up, fine) : false;
    };
    updateMediaKeys();

    // Events may come on any thread; everything after this runs on the main queue.
    reconfiguration_ = ports_.platform.displayServer().addReconfigurationHandler(
        [weak, &main](DisplayID, DisplayChange change) {
            if (weak.expired()) return;
            main.post([weak, change] {
                if (auto self = weak.lock())
                    self->scheduleRefresh(change != DisplayChange::changed);
            });
        });

    // Sleep may have lost what the user set: the colour tables and, on many monitors, the
    // DDC values.
    for (SystemEvent event : {SystemEvent::didWake, SystemEvent::screensDidWake}) {
        wakeObservers_.push_back(ports_.platform.systemEvents().addObserver(event, [weak] {
            if (auto self = weak.lock()) self->didWake();
        }));
    }

    refresh();
    if (resumingAfterServerLoss()) {
        // The new server switched every display on again and the monitors may have been
        // reset with it.
        const std::vector<DisplayID> online = ports_.displays.onlineIDs();
        const auto switchedOff = ports_.displays.disconnected();  // a copy: it is written to
        for (const auto& [id, name] : switchedOff) {
            if (std::find(online.begin(), online.end(), id) != online.end())
                (void)ports_.displays.setEnabled(id, false, /*quiet=*/false);
        }
        if (!switchedOff.empty()) refresh();
        ddc_->restoreAfterNextScan();
    }
    ddc_->rescan();
    ddcStarted_ = true;
    brightness_.applyColor();
    startAdaptive();
}

void AppModel::rememberServerLoss() {
    ports_.defaults.setNumber(kResumeAfterServerLossKey, ports_.platform.wallClock().utcSeconds());
}

bool AppModel::resumingAfterServerLoss() {
    const auto lost = ports_.defaults.number(kResumeAfterServerLossKey);
    if (!lost) return false;
    ports_.defaults.remove(kResumeAfterServerLossKey);
    const double since = ports_.platform.wallClock().utcSeconds() - *lost;
    if (since < 0 || since > kResumeWindowSeconds) return false;
    ports_.log.write("resuming after the display server was lost");
    return true;
}

void AppModel::startAdaptive() {
    const std::weak_ptr<AppModel> weak = weak_from_this();
    brightness_.setOnUserChange([weak](DisplayID display, double level) {
        auto self = weak.lock();
        if (!self) return;
        self->choose(display);
        self->adaptive_->userChanged(display, level);
    });
    // The built-in level is read after the change it announces, once per burst.
    builtinWatch_ = brightness_.builtinBrightness().subscribe([weak] {
        auto self = weak.lock();
        if (!self || self->adaptiveInputPosted_) return;
        self->adaptiveInputPosted_ = true;
        self->ports_.scheduler.mainQueue().post([weak] {
            auto model = weak.lock();
            if (!model) return;
            model->adaptiveInputPosted_ = false;
            model->adaptive_->inputMayHaveChanged();
        });
    });
    // Until the first scan, a DDC monitor would look like one dimmed in software.
    ddc_->whenScanned(std::nullopt, [weak] {
        auto self = weak.lock();
        if (!self) return;
        self->adaptiveStarted_ = true;
        self->adaptive_->start();
    });
}

void AppModel::didWake() {
    if (restoreAfterWake_.get()) brightness_.applyColor();
    ddc_->didWake();
}

void AppModel::scheduleRefresh(bool rescan) {
    burst_.event(rescan);
}

void AppModel::refresh() {
    const std::map<DisplayID, DisplayID> sessions = hidpi_.virtualByExternal();
    std::set<DisplayID> backing;
    std::set<DisplayID> external;
    for (const auto& [monitor, virtualID] : sessions) {
        external.insert(monitor);
        backing.insert(virtualID);
    }

    std::vector<DisplayInfo> listed = ports_.displays.list();
    std::erase_if(listed, [&](const DisplayInfo& d) { return backing.contains(d.id); });
    displays_.set(std::move(listed));
    hidpiOn_.set(std::move(external));
    accessibilityOK_.set(ports_.platform.input().isTrusted());
    lidMode_.set(lid_->machine().mode());
    lidAngle_.set(lid_->angle());

    for (const DisplayInfo& d : displays_.get()) {
        if (!d.isBuiltin || !d.isOnline) continue;
        brightness_.readBuiltin(d.id);
        break;
    }
    updateSleepInhibition();
    // A display seen before the event that announces it is scanned now. Not before start:
    // the start sequence scans after its first refresh.
    // Not while the burst that brought it still asks for its own rescan.
    if (ddcStarted_ && !burst_.rescanPending()) ddc_->scanNewDisplays();
    if (adaptiveStarted_) adaptive_->displaysChanged();
}

void AppModel::updateSleepInhibition() {
    if (preventSleepWithExternal_.get() && ports_.displays.snapshot().externals > 0) {
        if (sleepInhibition_) return;
        // A refusal leaves none, and the next refresh tries again.
        sleepInhibition_ = ports_.platform.power().inhibitIdleSleep(kSleepInhibitionReason);
    } else {
        sleepInhibition_.reset();
    }
}

void AppModel::updateMediaKeys() {
    accessibilityOK_.set(ports_.platform.input().isTrusted());
    if (brightnessKeys_.get() && capabilities().brightnessKeyTap) {
        mediaKeys_.start();
    } else {
        mediaKeys_.stop();
    }
}

void AppModel::setLidConfig(const LidConfig& config) {
    if (config == lidConfig_.get()) return;
    lidConfig_.set(config);
    saveLidConfig(ports_.defaults, config);
    lid_->update(config);
}

void AppModel::setPreventSleepWithExternal(bool on) {
    preventSleepWithExternal_.set(on);
    ports_.defaults.setBoolean(kPreventSleepKey, on);
    updateSleepInhibition();
}

void AppModel::setRestoreAfterWake(bool on) {
    restoreAfterWake_.set(on);
    ports_.defaults.setBoolean(kRestoreAfterWakeKey, on);
    ddc_->setRestoring(on);
}

void AppModel::setBrightnessKeys(bool on) {
    brightnessKeys_.set(on);
    ports_.defaults.setBoolean(kBrightnessKeysKey, on);
    updateMediaKeys();
}

}  // namespace lumora
