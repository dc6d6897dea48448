#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "wayland/wlroots/WlrootsDisplayServer.h"
#include "wayland/wlroots/WlrootsOutputs.h"

namespace lumora::wl {

namespace {

constexpr int kGammaAnswerTimeoutMs = 2000;
constexpr double kMaxGammaEntry = 65535.0;

void gammaSizeEvent(void* data, zwlr_gamma_control_v1*, std::uint32_t size) {
    auto* control = static_cast<WlrGammaControl*>(data);
    control->size = size;
    control->answered = true;
}

void gammaFailed(void* data, zwlr_gamma_control_v1*) {
    auto* control = static_cast<WlrGammaControl*>(data);
    control->failed = true;
    control->answered = true;
}

const zwlr_gamma_control_v1_listener kGammaListener = {gammaSizeEvent, gammaFailed};

std::string prefix(DisplayID id) {
    return "display " + std::to_string(id) + ": ";
}

// The three ramps one after the other, native-endian 16-bit entries, in an anonymous file.
int rampFile(const GammaRamps& ramps) {
    const int fd = memfd_create("lumora-gamma", MFD_CLOEXEC);
    if (fd < 0) return -1;
    std::vector<std::uint16_t> table;
    table.reserve(ramps.red.size() * 3);
    for (const auto* channel : {&ramps.red, &ramps.green, &ramps.blue}) {
        for (float v : *channel) {
            const double clamped = std::clamp(static_cast<double>(v), 0.0, 1.0);
            table.push_back(static_cast<std::uint16_t>(std::lround(clamped * kMaxGammaEntry)));
        }
    }
    const auto bytes = static_cast<ssize_t>(table.size() * sizeof(std::uint16_t));
    if (write(fd, table.data(), static_cast<std::size_t>(bytes)) != bytes ||
        lseek(fd, 0, SEEK_SET) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

}  // namespace

void WlrootsState::gammaAbsent(const WlrHead& head, const std::string& why) {
    if (!gammaAbsentLogged.insert(head.name).second) return;
    log(prefix(head.id) + "software dimming is not available on this display (" + why + ")");
}

// Takes a control and waits for its answer; nothing (and no control left) when refused.
WlrGammaControl* WlrootsState::heldGamma(const WlrHead& head) {
    if (const auto held = gammaControls.find(head.name); held != gammaControls.end()) {
        if (!held->second->failed) return held->second.get();
        // Taken over by another client or the output went away: let go and ask again.
        releaseGamma(head.name);
    }
    if (!gammaManager) {
        gammaAbsent(head, "the compositor has no gamma control");
        return nullptr;
    }
    WlOutput* out = output(head.name);
    if (!out) {
        gammaAbsent(head, "no wl_output of that name");
        return nullptr;
    }
    auto control = std::make_unique<WlrGammaControl>();
    control->proxy = zwlr_gamma_control_manager_v1_get_gamma_control(gammaManager, out->proxy);
    zwlr_gamma_control_v1_add_listener(control->proxy, &kGammaListener, control.get());
    const bool answered =
        waitUntil([&control] { return control->answered; }, kGammaAnswerTimeoutMs);
    if (!answered || control->failed || control->size == 0) {
        zwlr_gamma_control_v1_destroy(control->proxy);
        gammaSizes[head.name] = 0;
        gammaAbsent(head, answered ? "the compositor refused gamma control"
                                   : "the compositor did not answer the gamma request");
        return nullptr;
    }
    gammaSizes[head.name] = control->size;
    return gammaControls.emplace(head.name, std::move(control)).first->second.get();
}

std::uint32_t WlrootsState::gammaSize(const WlrHead& head) {
    if (const auto known = gammaSizes.find(head.name); known != gammaSizes.end())
        return known->second;
    // Probe: a control held only for the question is given back at once, so the compositor
    // keeps the output's own ramps and other clients can take it.
    const bool wasHeld = gammaControls.count(head.name) != 0;
    WlrGammaControl* control = heldGamma(head);
    const std::uint32_t size = control ? control->size : 0;
    if (control && !wasHeld) releaseGamma(head.name);
    return size;
}

void WlrootsState::releaseGamma(const std::string& connector) {
    const auto held = gammaControls.find(connector);
    if (held == gammaControls.end()) return;
    zwlr_gamma_control_v1_destroy(held->second->proxy);
    gammaControls.erase(held);
    wl_display_flush(display);
}

std::size_t WlrootsDisplayServer::gammaRampSize(DisplayID id) const {
    const WlrHead* head = state_->onlineHead(id);
    return head ? state_->gammaSize(*head) : 0;
}

ConfigStatus WlrootsDisplayServer::setGamma(DisplayID id, const GammaRamps& ramps) {
    const WlrHead* head = state_->onlineHead(id);
    if (!head) return kConfigIllegalArgument;
    const std::uint32_t size = state_->gammaSize(*head);
    if (size == 0) return kConfigUnavailable;
    if (ramps.red.size() != size || ramps.green.size() != size || ramps.blue.size() != size)
        return kConfigIllegalArgument;
    WlrGammaControl* control = state_->heldGamma(*head);
    if (!control) return kConfigUnavailable;
    const int fd = rampFile(ramps);
    if (fd < 0) {
        state_->log(prefix(id) + "cannot pass gamma ramps to the compositor (no memory file)");
        return kConfigRefused;
    }
    zwlr_gamma_control_v1_set_gamma(control->proxy, fd);
    close(fd);
    // The compositor answers a bad table with failed; a round trip tells.
    if (!state_->sync() || control->failed) {
        state_->log(prefix(id) + "the compositor refused the gamma ramps");
        state_->releaseGamma(head->name);
        return kConfigRefused;
    }
    return kConfigOK;
}

void WlrootsDisplayServer::resetGamma(DisplayID id) {
    if (const WlrHead* head = state_->head(id)) state_->releaseGamma(head->name);
}

}  // namespace lumora::wl
