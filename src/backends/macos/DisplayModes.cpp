#include "DisplayModes.h"

namespace lumora::mac {

CFRef<CFArrayRef> copyAllModes(CGDirectDisplayID id) {
    const void* keys[] = {kCGDisplayShowDuplicateLowResolutionModes};
    const void* values[] = {kCFBooleanTrue};
    CFRef<CFDictionaryRef> options(CFDictionaryCreate(kCFAllocatorDefault, keys, values, 1,
                                                      &kCFTypeDictionaryKeyCallBacks,
                                                      &kCFTypeDictionaryValueCallBacks));
    return CFRef<CFArrayRef>(CGDisplayCopyAllDisplayModes(id, options.get()));
}

CFIndex modeCount(const CFRef<CFArrayRef>& modes) {
    return modes ? CFArrayGetCount(modes.get()) : 0;
}

CGDisplayModeRef modeAt(const CFRef<CFArrayRef>& modes, CFIndex index) {
    return static_cast<CGDisplayModeRef>(
        const_cast<void*>(CFArrayGetValueAtIndex(modes.get(), index)));
}

RawModeFields rawFields(CGDisplayModeRef mode) {
    RawModeFields raw;
    raw.ioModeID = CGDisplayModeGetIODisplayModeID(mode);
    raw.width = CGDisplayModeGetWidth(mode);
    raw.height = CGDisplayModeGetHeight(mode);
    raw.pixelWidth = CGDisplayModeGetPixelWidth(mode);
    raw.pixelHeight = CGDisplayModeGetPixelHeight(mode);
    raw.refresh = CGDisplayModeGetRefreshRate(mode);
    raw.usableForDesktopGUI = CGDisplayModeIsUsableForDesktopGUI(mode);
    return raw;
}

}  // namespace lumora::mac
