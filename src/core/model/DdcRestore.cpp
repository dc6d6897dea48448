// Giving a monitor back the DDC values the user set, after it forgot them in sleep or while
// it was unplugged.
#include <algorithm>
#include <string>

#include "model/DdcControl.h"

namespace lumora {

namespace {

std::string describe(const DdcMemory::Controls& controls) {
    std::string out;
    for (const auto& [code, raw] : controls) {
        if (!out.empty()) out += ", ";
        const auto vcp = vcpFromCode(code);
        out += (vcp ? std::string(name(*vcp)) : hexCode(code)) + " " + std::to_string(raw);
    }
    return out;
}

const char* phrase(DdcControl::RestoreCause cause) {
    switch (cause) {
        case DdcControl::RestoreCause::wake:
            return "after wake";
        case DdcControl::RestoreCause::reconnection:
            return "after reconnection";
        case DdcControl::RestoreCause::serverRestart:
            return "after the display server restarted";
    }
    return "";
}

}  // namespace

void DdcControl::setRestoring(bool on) {
    restoring_ = on;
    if (on) return;
    restoreAfterScan_.clear();
    while (!restores_.empty())
        cancelRestore(restores_.begin()->first);
}

void DdcControl::didWake() {
    for (DisplayID id : candidates()) {
        waking_.insert(id);
        if (restoring_) restoreAfterScan_.insert_or_assign(id, RestoreCause::wake);
    }
    // The did-wake and screens-did-wake notifications come together: one scan serves both.
    if (wakeScanQueued_) return;
    wakeScanQueued_ = true;
    rescan();
}

void DdcControl::restoreAfterNextScan() {
    if (!restoring_) return;
    for (DisplayID id : candidates())
        restoreAfterScan_.insert_or_assign(id, RestoreCause::serverRestart);
}

void DdcControl::startRestore(DisplayID display, RestoreCause cause) {
    if (!restoring_ || !services_.contains(display)) return;
    std::string key = keys_.at(display);
    if (memory_.controls(key).empty()) return;  // never set by the user: left alone
    cancelRestore(display);
    Restore job;
    job.cause = cause;
    job.key = std::move(key);
    job.startedAt = deps_.scheduler.uptime();
    job.generation = nextGeneration_++;
    restores_[display] = std::move(job);
    attemptRestore(display);
}

void DdcControl::attemptRestore(DisplayID display) {
    auto job = restores_.find(display);
    if (job == restores_.end()) return;
    // Read anew each time: the user may have set a control since.
    const DdcMemory::Controls wanted = memory_.controls(job->second.key);
    const std::uint64_t generation = job->second.generation;
    auto service = services_.find(display);
    if (service == services_.end()) {
        finishAttempt(display, generation, wanted, {});
        return;
    }
    busQueue(service->second->bus())
        .post([weak = weak_from_this(), &main = deps_.scheduler.mainQueue(),
               channel = service->second, display, generation, wanted] {
            RestoreReading reading;
            for (const auto& [code, raw] : wanted) {
                auto now = channel->read(code);
                if (!now || now->first != raw) {
                    channel->write(code, raw);
                    reading.written.insert(code);
                    now = channel->read(code);
                }
                if (now) reading.read[code] = *now;
            }
            main.post([weak, display, generation, wanted, reading = std::move(reading)] {
                if (auto self = weak.lock())
                    self->finishAttempt(display, generation, wanted, reading);
            });
        });
}

void DdcControl::finishAttempt(DisplayID display, std::uint64_t generation,
                               const DdcMemory::Controls& wanted, const RestoreReading& reading) {
    auto job = restores_.find(display);
    if (job == restores_.end() || job->second.generation != generation) return;
    Restore& restore = job->second;

    // A value that reads back as wanted is what the monitor holds, unless the user has set
    // another since.
    const DdcMemory::Controls now = memory_.controls(restore.key);
    values_.modify([&](Values& values) {
        for (const auto& [code, reply] : reading.read) {
            auto current = now.find(code);
            if (reply.second != 0 && current != now.end() && current->second == reply.first)
                values[display][code] = static_cast<double>(reply.first) / reply.second;
        }
    });
    if (!reading.read.empty() && !available_->contains(display))
        available_.modify([&](std::set<DisplayID>& ids) { ids.insert(display); });

    restore.written.insert(reading.written.begin(), reading.written.end());
    DdcMemory::Controls restored;
    DdcMemory::Controls missing;
    for (const auto& [code, raw] : wanted) {
        auto read = reading.read.find(code);
        if (read == reading.read.end() || read->second.first != raw) {
            missing[code] = raw;
        } else if (restore.written.contains(code)) {
            restored[code] = raw;
        }
    }
    const std::string prefix = "display " + std::to_string(display) + ": ";
    if (missing.empty()) {
        if (!restored.empty())
            deps_.log.write(prefix + "restored " + describe(restored) + " " +
                            phrase(restore.cause));
        restores_.erase(job);
        return;
    }
    if (restore.retries == kRestoreRetries.size()) {
        deps_.log.write(prefix + "could not restore " + describe(missing) + " " +
                        phrase(restore.cause));
        restores_.erase(job);
        return;
    }
    const double due = restore.startedAt + kRestoreRetries[restore.retries++];
    // Cancelled with the job, so the job it finds is still this one.
    restore.retry = deps_.scheduler.mainQueue().postAfter(
        std::max(0.0, due - deps_.scheduler.uptime()), [weak = weak_from_this(), display] {
            if (auto self = weak.lock()) self->attemptRestore(display);
        });
}

void DdcControl::cancelRestore(DisplayID display) {
    auto job = restores_.find(display);
    if (job == restores_.end()) return;
    if (job->second.retry) job->second.retry->cancel();
    restores_.erase(job);
}

}  // namespace lumora
