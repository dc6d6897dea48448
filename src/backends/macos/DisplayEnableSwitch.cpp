#include "DisplayEnableSwitch.h"

#include "PrivateSymbols.h"

namespace lumora::mac {

DisplayEnableSwitch::DisplayEnableSwitch() {
    void* skyLight = openFramework(kSkyLightFramework);
    configure_ = bindSymbol<ConfigureEnabled>(skyLight, "SLSConfigureDisplayEnabled");
    // Older systems carry the same call under its CoreGraphics name.
    if (!configure_)
        configure_ = bindSymbol<ConfigureEnabled>(nullptr, "CGSConfigureDisplayEnabled");
}

ConfigStatus DisplayEnableSwitch::configure(CGDisplayConfigRef config, CGDirectDisplayID id,
                                            bool enabled) const {
    if (!configure_) return kConfigUnavailable;
    return static_cast<ConfigStatus>(configure_(config, id, enabled));
}

}  // namespace lumora::mac
