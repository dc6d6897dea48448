#include "decode/Reconfiguration.h"

namespace lumora::mac {

std::optional<DisplayChange> decodeReconfiguration(std::uint32_t flags) {
    if (flags & kBeginConfigurationFlag) return std::nullopt;
    // A display switched on or off in software comes and goes like a plugged one.
    const bool cameOnline = (flags & (kAddFlag | kEnabledFlag)) != 0;
    const bool wentOffline = (flags & (kRemoveFlag | kDisabledFlag)) != 0;
    // Both at once says nothing reliable about the end state; "changed" makes the core read
    // the whole list again.
    if (cameOnline && !wentOffline) return DisplayChange::added;
    if (wentOffline && !cameOnline) return DisplayChange::removed;
    return DisplayChange::changed;
}

}  // namespace lumora::mac
