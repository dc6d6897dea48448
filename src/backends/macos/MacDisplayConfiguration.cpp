#include "MacDisplayConfiguration.h"

#include "DisplayModes.h"
#include "decode/MainDisplayMove.h"

namespace lumora::mac {

MacDisplayConfiguration::MacDisplayConfiguration(CGDisplayConfigRef config,
                                                 const DisplayServer& displays,
                                                 const DisplayEnableSwitch& enableSwitch)
    : config_(config), displays_(displays), enableSwitch_(enableSwitch) {}

MacDisplayConfiguration::~MacDisplayConfiguration() {
    cancel();
}

ConfigStatus MacDisplayConfiguration::setMode(DisplayID id, std::int32_t modeID) {
    if (!config_) return kConfigUnavailable;
    CFRef<CFArrayRef> modes = copyAllModes(id);
    for (CFIndex i = 0; i < modeCount(modes); ++i) {
        CGDisplayModeRef mode = modeAt(modes, i);
        // The number and the pixel size together (a HiDPI mode and its low-resolution
        // duplicate share the number), and only a mode the desktop can use: the same number
        // may also name a variant that exists for mirroring or television output only.
        const RawModeFields raw = rawFields(mode);
        if (modeHandle(raw.ioModeID, raw.pixelWidth, raw.pixelHeight) != modeID ||
            !raw.usableForDesktopGUI) {
            continue;
        }
        const CGError status = CGConfigureDisplayWithDisplayMode(config_, id, mode, nullptr);
        modesInUse_.push_back(std::move(modes));
        return static_cast<ConfigStatus>(status);
    }
    return kConfigIllegalArgument;
}

ConfigStatus MacDisplayConfiguration::setOrigin(DisplayID id, std::int32_t x, std::int32_t y) {
    if (!config_) return kConfigUnavailable;
    return static_cast<ConfigStatus>(CGConfigureDisplayOrigin(config_, id, x, y));
}

ConfigStatus MacDisplayConfiguration::setMain(DisplayID id) {
    if (!config_) return kConfigUnavailable;
    std::vector<DisplayOrigin> origins;
    for (DisplayID display : displays_.onlineIDs())
        origins.push_back({display, displays_.bounds(display).origin});
    const auto moves = originsForMain(origins, id);
    if (!moves) return kConfigIllegalArgument;
    for (const OriginMove& move : *moves) {
        const ConfigStatus status = setOrigin(move.id, move.x, move.y);
        if (status != kConfigOK) return status;
    }
    return kConfigOK;
}

ConfigStatus MacDisplayConfiguration::setMirror(DisplayID id, DisplayID target) {
    if (!config_) return kConfigUnavailable;
    return static_cast<ConfigStatus>(CGConfigureDisplayMirrorOfDisplay(config_, id, target));
}

ConfigStatus MacDisplayConfiguration::setEnabled(DisplayID id, bool enabled) {
    if (!config_) return kConfigUnavailable;
    return enableSwitch_.configure(config_, id, enabled);
}

ConfigStatus MacDisplayConfiguration::complete(ConfigureOption option) {
    if (!config_) return kConfigUnavailable;
    const CGConfigureOption how =
        option == ConfigureOption::permanently ? kCGConfigurePermanently : kCGConfigureForSession;
    const CGError status = CGCompleteDisplayConfiguration(config_, how);
    // Completion ends the transaction whatever its outcome; it must not be cancelled after.
    config_ = nullptr;
    modesInUse_.clear();
    return static_cast<ConfigStatus>(status);
}

void MacDisplayConfiguration::cancel() {
    if (!config_) return;
    CGCancelDisplayConfiguration(config_);
    config_ = nullptr;
    modesInUse_.clear();
}

}  // namespace lumora::mac
