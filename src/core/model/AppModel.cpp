#include "model/AppModel.h"

#include <utility>

namespace lumora {

namespace {

// Display reconfiguration flags that ask for a DDC rescan: a display came or went.
constexpr std::uint32_t kAddedOrRemoved = kReconfigAdd | kReconfigRemove;

}  // namespace

std::shared_ptr<AppModel> AppModel::create(AppPorts ports) {
    return std::make_shared<AppModel>(Passkey{}, ports);
}

AppModel::AppModel(Passkey, AppPorts ports)
    : ports_(ports),
      lid_(LidController::create(
          loadLidConfig(ports.defaults),
          LidController::Deps{ports.scheduler, ports.displayServer, ports.displays, ports.backlight,
                              ports.power, ports.lidSensor, ports.systemEvents, ports.defaults,
                              ports.log})),
      virtualScreens_(ports.displays, ports.virtualDisplays, ports.defaults, ports.log),
      hidpi_(ports.displays, ports.virtualDisplays, ports.scheduler, ports.defaults, ports.log),
      hotkeys_(ports.input, ports.scheduler, ports.log),
      mediaKeys_(ports.input, ports.log),
      brightness_(ports.backlight),
      gamma_(ports.displayServer),
      ddcQueue_(ports.scheduler.makeSerialQueue(kDdcQueueLabel)) {
    // Loading assigns the initial values; nobody can have subscribed yet.
    color_.set(loadColorAdjust(ports_.defaults));
    lidConfig_.set(lid_->machine().config());
    shortcuts_.set(loadShortcuts(ports_.defaults));
    preventSleepWithExternal_.set(loadPreventSleep(ports_.defaults));
    brightnessKeys_.set(loadBrightnessKeys(ports_.defaults));
    accessibilityOK_.set(ports_.input.isTrusted());
    launchAgentInstalled_ = ports_.session.launchAgentInstalled();
}

AppModel::~AppModel() {
    // Pending DDC writes hold only their channel and value: they still reach the monitor.
    if (reconfiguration_) ports_.displayServer.removeReconfigurationHandler(*reconfiguration_);
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
    hotkeys_.registerShortcuts(shortcuts_.get());

    mediaKeys_.onBrightness = [weak](bool up, bool fine) {
        auto self = weak.lock();
        return self ? self->brightnessKeyPressed(up, fine) : false;
    };
    updateMediaKeys();

    // Events may come on any thread; everything after this runs on the main queue.
    reconfiguration_ = ports_.displayServer.addReconfigurationHandler(
        [weak, &main](DisplayID, std::uint32_t flags) {
            if ((flags & kReconfigBegin) != 0 || weak.expired()) return;
            main.post([weak, flags] {
                if (auto self = weak.lock()) self->scheduleRefresh((flags & kAddedOrRemoved) != 0);
            });
        });

    refresh();
    rescanDDC();
    applyColor();
}

void AppModel::scheduleRefresh(bool rescan) {
    // Not merged: a newly attached monitor should be controllable at once.
    if (rescan) {
        rescanDDC();
        hidpi_.reconcile();
    }
    if (refreshScheduled_) return;
    refreshScheduled_ = true;
    // A fixed delay from the first event of a burst, not a sliding one.
    ports_.scheduler.mainQueue().postAfter(kRefreshDelay, [weak = weak_from_this()] {
        auto self = weak.lock();
        if (!self) return;
        self->refreshScheduled_ = false;
        self->refresh();
        self->applyColor();
    });
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
    accessibilityOK_.set(ports_.input.isTrusted());
    lidMode_.set(lid_->machine().mode());
    lidAngle_.set(lid_->angle());

    for (const DisplayInfo& d : displays_.get()) {
        if (!d.isBuiltin || !d.isOnline) continue;
        // An unreadable level leaves the old one.
        if (auto level = brightness_.builtin(d.id)) builtinBrightness_.set(*level);
        break;
    }
    updateSleepAssertion();
}

void AppModel::updateSleepAssertion() {
    if (preventSleepWithExternal_.get() && ports_.displays.snapshot().externals > 0) {
        if (sleepAssertion_ != 0) return;
        // A refusal leaves 0, and the next refresh tries again.
        sleepAssertion_ = ports_.power.createAssertion(kSleepAssertionType, kSleepAssertionName);
    } else if (sleepAssertion_ != 0) {
        ports_.power.releaseAssertion(sleepAssertion_);
        sleepAssertion_ = 0;
    }
}

void AppModel::updateMediaKeys() {
    accessibilityOK_.set(ports_.input.isTrusted());
    if (brightnessKeys_.get()) {
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
    updateSleepAssertion();
}

void AppModel::setBrightnessKeys(bool on) {
    brightnessKeys_.set(on);
    ports_.defaults.setBoolean(kBrightnessKeysKey, on);
    updateMediaKeys();
}

}  // namespace lumora
