#include "model/DdcControl.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "base/Check.h"
#include "ddc/DDC.h"
#include "display/Displays.h"

namespace lumora {

namespace {

// The scan reads only these, to keep the reconfiguration path short.
constexpr VCP kScannedCodes[] = {VCP::brightness, VCP::contrast, VCP::volume};

}  // namespace

std::shared_ptr<DdcControl> DdcControl::create(Deps deps, const Signal* willChange) {
    return std::make_shared<DdcControl>(Passkey{}, deps, willChange);
}

DdcControl::DdcControl(Passkey, Deps deps, const Signal* willChange)
    : deps_(deps),
      values_({}, willChange),
      available_({}, willChange),
      capabilities_({}, willChange),
      queue_(deps.scheduler.makeSerialQueue(kQueueLabel)),
      memory_(deps.defaults),
      timingMemory_(deps.defaults),
      capabilityMemory_(deps.defaults) {}

// Pending writes hold only their channel and value: they still reach the monitor.
DdcControl::~DdcControl() {
    for (const auto& waiter : waiters_) {
        if (waiter->timeout) waiter->timeout->cancel();
    }
}

std::optional<double> DdcControl::value(DisplayID display, VCP vcp) const {
    auto values = values_->find(display);
    if (values == values_->end()) return std::nullopt;
    auto level = values->second.find(code(vcp));
    if (level == values->second.end()) return std::nullopt;
    return level->second;
}

std::vector<DisplayID> DdcControl::candidates() const {
    std::vector<DisplayID> ids;
    for (DisplayID id : deps_.displays.onlineIDs()) {
        if (!deps_.server.isBuiltin(id) && !deps_.displays.isVirtual(id)) ids.push_back(id);
    }
    return ids;
}

void DdcControl::rescan() {
    const std::vector<DisplayID> ids = candidates();
    const auto gone = [&](DisplayID id) {
        return std::find(ids.begin(), ids.end(), id) == ids.end();
    };
    // A display that left is scanned anew when it comes back.
    std::erase_if(scanned_, gone);
    for (DisplayID id : ids) {
        if (scanned_.contains(id)) continue;
        firstScan_.insert(id);
        // Not at start: what a monitor shows then may be what the user chose on its own
        // buttons while Lumora was not running.
        if (scannedOnce_ && restoring_)
            restoreAfterScan_.try_emplace(id, RestoreCause::reconnection);
    }
    scannedOnce_ = true;
    std::erase_if(restoreAfterScan_, [&](const auto& entry) { return gone(entry.first); });
    std::erase_if(waking_, gone);
    for (auto job = restores_.begin(); job != restores_.end();) {
        const DisplayID id = (job++)->first;
        if (gone(id)) cancelRestore(id);
    }
    // Read here: the display server belongs to the main thread.
    auto targets = DDC::targets(deps_.server, ids);
    // Each monitor's key and its learning so far (this run's, else what an earlier one kept).
    std::map<DisplayID, std::pair<std::string, DdcTimingLearner>> timings;
    std::set<DisplayID> askCapabilities;  // once per monitor: the answer is kept
    for (DisplayID id : ids) {
        std::string key = deps_.server.persistentKey(id);
        DdcTimingLearner learner;
        if (auto known = learners_.find(key); known != learners_.end()) {
            learner = known->second;
        } else if (auto kept = timingMemory_.learned(key)) {
            learner = DdcTimingLearner(*kept);
        }
        if (!capabilityMemory_.known(key) && capabilitiesAsked_.insert(key).second)
            askCapabilities.insert(id);
        timings.emplace(id, std::pair{std::move(key), learner});
    }
    AVServices& av = deps_.av;
    Scheduler& scheduler = deps_.scheduler;
    const std::uint64_t scan = nextScan_++;
    queue_->post([weak = weak_from_this(), targets = std::move(targets), ids, &av, &scheduler,
                  timings = std::move(timings), askCapabilities = std::move(askCapabilities),
                  scan] {
        auto services = DDC::services(av, scheduler, targets);
        for (const auto& [id, service] : services) {
            const auto& [key, learner] = timings.at(id);
            service->useLearner(learner);
            service->setTimingListener(
                [weak, &main = scheduler.mainQueue(), display = id, monitor = key](
                    const DdcTimingLearner& learned, DdcTimingLearner::Change change) {
                    main.post([weak, display, monitor, learned, change] {
                        if (auto self = weak.lock())
                            self->learnedTiming(display, monitor, learned, change);
                    });
                });
        }
        scheduler.mainQueue().post(
            [weak, scan, services = std::move(services), ids, askCapabilities]() mutable {
                if (auto self = weak.lock())
                    self->readBuses(scan, std::move(services), ids, askCapabilities);
            });
    });
}

WorkQueue& DdcControl::busQueue(std::uint64_t bus) {
    auto& queue = busQueues_[bus];
    if (!queue) queue = deps_.scheduler.makeSerialQueue(std::string(kQueueLabel) + ".bus");
    return *queue;
}

void DdcControl::readBuses(std::uint64_t scan, Services services, const std::vector<DisplayID>& ids,
                           const std::set<DisplayID>& askCapabilities) {
    std::map<std::uint64_t, Services> buses;
    for (const auto& [id, service] : services)
        buses[service->bus()].emplace(id, service);
    Scan& job = scans_[scan];
    job.services = std::move(services);
    job.ids = ids;
    job.busesLeft = buses.size();
    if (buses.empty()) busRead(scan, {});
    Scheduler& scheduler = deps_.scheduler;
    for (auto& [bus, monitors] : buses) {
        std::set<DisplayID> ask;
        for (const auto& [id, service] : monitors) {
            if (askCapabilities.contains(id)) ask.insert(id);
        }
        busQueue(bus).post([weak = weak_from_this(), &main = scheduler.mainQueue(), scan,
                            monitors = std::move(monitors), ask = std::move(ask)] {
            Values values;
            for (const auto& [id, service] : monitors) {
                auto& entry = values[id];  // every service gets one, even an empty one
                for (VCP vcp : kScannedCodes) {
                    auto reply = service->read(code(vcp));
                    if (!reply || reply->second == 0) continue;
                    entry[code(vcp)] = static_cast<double>(reply->first) / reply->second;
                }
            }
            main.post([weak, scan, values = std::move(values)]() mutable {
                if (auto self = weak.lock()) self->busRead(scan, std::move(values));
            });
            // After the values: the sliders must not wait for strings read once per monitor.
            std::map<DisplayID, std::string> texts;
            for (const auto& [id, service] : monitors) {
                if (!ask.contains(id)) continue;
                if (auto text = service->readCapabilities()) texts.emplace(id, std::move(*text));
            }
            if (texts.empty()) return;
            main.post([weak, texts = std::move(texts)] {
                if (auto self = weak.lock()) self->capabilitiesRead(texts);
            });
        });
    }
}

void DdcControl::busRead(std::uint64_t scan, Values values) {
    auto job = scans_.find(scan);
    if (job == scans_.end()) return;
    job->second.values.merge(values);
    if (job->second.busesLeft > 0 && --job->second.busesLeft > 0) return;
    Scan done = std::move(job->second);
    scans_.erase(job);
    publish(std::move(done.services), std::move(done.values), done.ids);
}

void DdcControl::capabilitiesRead(const std::map<DisplayID, std::string>& texts) {
    for (const auto& [id, text] : texts) {
        auto key = keys_.find(id);
        if (key == keys_.end()) continue;  // gone since
        if (!capabilityMemory_.remember(key->second, text)) {
            deps_.log.write("DDC display " + std::to_string(id) +
                            ": its capabilities string does not parse; every control offered");
        }
    }
    publishCapabilities();
}

void DdcControl::publishCapabilities() {
    std::map<DisplayID, DdcCapabilities> capabilities;
    for (const auto& [id, key] : keys_) {
        if (auto known = capabilityMemory_.known(key)) capabilities.emplace(id, std::move(*known));
    }
    capabilities_.set(std::move(capabilities));
}

void DdcControl::scanNewDisplays() {
    const std::vector<DisplayID> ids = candidates();
    const bool unseen = std::any_of(ids.begin(), ids.end(), [&](DisplayID id) {
        return !scanned_.contains(id) && !firstScan_.contains(id);
    });
    if (unseen) rescan();
}

void DdcControl::publish(Services services, Values values, const std::vector<DisplayID>& scanned) {
    for (DisplayID id : scanned) {
        // Just awake and not listening yet: what it answered before still stands.
        auto fresh = values.find(id);
        auto before = values_->find(id);
        if (waking_.erase(id) && fresh != values.end() && fresh->second.empty() &&
            before != values_->end() && available_->contains(id)) {
            fresh->second = before->second;
        }
    }
    services_ = std::move(services);
    keys_.clear();
    for (const auto& [id, service] : services_)
        keys_.emplace(id, deps_.server.persistentKey(id));
    publishCapabilities();
    std::set<DisplayID> answering;
    for (const auto& [id, codes] : values) {
        if (!codes.empty()) answering.insert(id);
    }
    const std::size_t answeringCount = answering.size();
    available_.set(std::move(answering));
    values_.set(std::move(values));
    deps_.log.write("DDC: " + std::to_string(services_.size()) +
                    " external display(s) with a DDC channel, " + std::to_string(answeringCount) +
                    " answering");
    for (DisplayID id : scanned) {
        firstScan_.erase(id);
        scanned_.insert(id);
    }
    wakeScanQueued_ = false;
    for (DisplayID id : scanned) {
        auto cause = restoreAfterScan_.find(id);
        if (cause == restoreAfterScan_.end()) continue;
        const RestoreCause why = cause->second;
        restoreAfterScan_.erase(cause);
        startRestore(id, why);
    }
    releaseWaiters();
}

void DdcControl::set(DisplayID display, VCP vcp, double value, std::uint16_t max) {
    const std::uint8_t byte = code(vcp);
    values_.modify([&](Values& values) { values[display][byte] = value; });
    auto service = services_.find(display);
    if (service == services_.end()) return;

    const auto key = std::pair{display, byte};
    if (auto pending = pending_.find(key); pending != pending_.end()) pending->second->cancel();

    const double raw = std::round(value * max);  // halves away from zero
    check(raw >= 0 && raw <= std::numeric_limits<std::uint16_t>::max(),
          "DDC value outside 0...1 (callers clamp)");
    if (DdcMemory::kept(byte))
        memory_.remember(keys_.at(display), byte, static_cast<std::uint16_t>(raw));
    ++writeGenerations_[key];
    queueWrite(service->second, display, byte, static_cast<std::uint16_t>(raw), kDebounce,
               kBusyRetries);
}

void DdcControl::queueWrite(const std::shared_ptr<DDCService>& channel, DisplayID display,
                            std::uint8_t byte, std::uint16_t raw, double delay, int retries) {
    const auto key = std::pair{display, byte};
    const std::uint64_t generation = writeGenerations_[key];
    auto write = [weak = weak_from_this(), &main = deps_.scheduler.mainQueue(), channel, display,
                  byte, raw, retries, generation] {
        // Another program held the bus: the value goes out later, unless a newer one has
        // been queued meanwhile (its write replaced this one's entry).
        const bool busy = channel->write(byte, raw) == DdcWriteStatus::busBusy;
        main.post([weak, channel, display, byte, raw, busy, retries, generation] {
            auto self = weak.lock();
            if (!self) return;
            self->memory_.save();
            if (busy && retries > 0 && self->writeGenerations_[{display, byte}] == generation)
                self->queueWrite(channel, display, byte, raw, kBusyRetryDelay, retries - 1);
        });
    };
    pending_.insert_or_assign(key, busQueue(channel->bus()).postAfter(delay, std::move(write)));
}

void DdcControl::send(DisplayID display, VCP vcp, std::uint16_t raw, Sent sent) {
    auto service = services_.find(display);
    if (service == services_.end()) {
        if (sent) sent(DdcWriteStatus::noAccess);
        return;
    }
    const std::uint8_t byte = code(vcp);
    busQueue(service->second->bus())
        .post([weak = weak_from_this(), channel = service->second, display, byte, raw,
               &main = deps_.scheduler.mainQueue(), sent = std::move(sent)] {
            const DdcWriteStatus status = channel->write(byte, raw);
            main.post([weak, display, byte, raw, sent, status] {
                auto self = weak.lock();
                if (self && status != DdcWriteStatus::ok) {
                    self->deps_.log.write("DDC display " + std::to_string(display) + ": VCP " +
                                          hexCode(byte) + " = " + std::to_string(raw) +
                                          " not taken (" + describe(status) + ")");
                }
                if (sent) sent(status);
            });
        });
    if (DdcMemory::kept(byte)) memory_.remember(keys_.at(display), byte, raw);
    memory_.save();
    deps_.log.write("DDC display " + std::to_string(display) + ": VCP " + hexCode(byte) + " = " +
                    std::to_string(raw));
}

void DdcControl::learnedTiming(DisplayID display, const std::string& key,
                               const DdcTimingLearner& learner, DdcTimingLearner::Change change) {
    learners_.insert_or_assign(key, learner);
    if (change != DdcTimingLearner::Change::settled &&
        change != DdcTimingLearner::Change::steppedBack) {
        return;
    }
    const DdcTiming& timing = learner.timing();
    timingMemory_.remember(key, timing);
    const auto ms = [](double seconds) { return std::to_string(std::lround(seconds * 1000)); };
    const std::string waits =
        ms(timing.quiet) + " ms before a message, " + ms(timing.replyWait) + " ms for a reply";
    deps_.log.write("DDC display " + std::to_string(display) +
                    (change == DdcTimingLearner::Change::settled
                         ? ": learned waits " + waits
                         : ": an exchange failed; back to " + waits));
}

bool DdcControl::scanning(std::optional<DisplayID> display) const {
    return display ? firstScan_.contains(*display) : !firstScan_.empty();
}

void DdcControl::whenScanned(std::optional<DisplayID> display, std::function<void()> then) {
    if (!scanning(display)) {
        then();
        return;
    }
    auto waiter = std::make_shared<Waiter>(Waiter{display, std::move(then), nullptr});
    std::weak_ptr<Waiter> weakWaiter = waiter;
    waiter->timeout = deps_.scheduler.mainQueue().postAfter(kFirstScanWait,
                                                            [weak = weak_from_this(), weakWaiter] {
                                                                auto self = weak.lock();
                                                                auto late = weakWaiter.lock();
                                                                if (!self || !late) return;
                                                                std::erase(self->waiters_, late);
                                                                late->then();
                                                            });
    waiters_.push_back(std::move(waiter));
}

void DdcControl::releaseWaiters() {
    std::vector<std::shared_ptr<Waiter>> ready;
    std::erase_if(waiters_, [&](const std::shared_ptr<Waiter>& w) {
        if (scanning(w->display)) return false;
        ready.push_back(w);
        return true;
    });
    // Run after the list is settled: a command may start another scan.
    for (const auto& waiter : ready) {
        waiter->timeout->cancel();
        waiter->then();
    }
}

}  // namespace lumora
