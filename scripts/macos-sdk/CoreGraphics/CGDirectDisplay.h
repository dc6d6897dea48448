#pragma once
// Display facts, modes and gamma transfer tables.

#include <CoreGraphics/CGError.h>
#include <CoreGraphics/CGGeometry.h>

CF_EXTERN_C_BEGIN

typedef uint32_t CGDirectDisplayID;
typedef int boolean_t;
typedef float CGGammaValue;
typedef struct CGDisplayMode* CGDisplayModeRef;

#define kCGNullDirectDisplay ((CGDirectDisplayID)0)

CF_EXPORT CGError CGGetOnlineDisplayList(uint32_t maxDisplays, CGDirectDisplayID* onlineDisplays,
                                         uint32_t* displayCount);
CF_EXPORT CGDirectDisplayID CGMainDisplayID(void);
CF_EXPORT boolean_t CGDisplayIsBuiltin(CGDirectDisplayID display);
CF_EXPORT boolean_t CGDisplayIsAsleep(CGDirectDisplayID display);
CF_EXPORT uint32_t CGDisplayVendorNumber(CGDirectDisplayID display);
CF_EXPORT uint32_t CGDisplayModelNumber(CGDirectDisplayID display);
CF_EXPORT uint32_t CGDisplaySerialNumber(CGDirectDisplayID display);
CF_EXPORT double CGDisplayRotation(CGDirectDisplayID display);
CF_EXPORT CGRect CGDisplayBounds(CGDirectDisplayID display);
CF_EXPORT CGSize CGDisplayScreenSize(CGDirectDisplayID display);
CF_EXPORT CGDirectDisplayID CGDisplayMirrorsDisplay(CGDirectDisplayID display);

// Modes.
CF_EXPORT const CFStringRef kCGDisplayShowDuplicateLowResolutionModes;
CF_EXPORT CGDisplayModeRef CGDisplayCopyDisplayMode(CGDirectDisplayID display);
CF_EXPORT CFArrayRef CGDisplayCopyAllDisplayModes(CGDirectDisplayID display,
                                                  CFDictionaryRef options);
CF_EXPORT void CGDisplayModeRelease(CGDisplayModeRef mode);
CF_EXPORT size_t CGDisplayModeGetWidth(CGDisplayModeRef mode);
CF_EXPORT size_t CGDisplayModeGetHeight(CGDisplayModeRef mode);
CF_EXPORT size_t CGDisplayModeGetPixelWidth(CGDisplayModeRef mode);
CF_EXPORT size_t CGDisplayModeGetPixelHeight(CGDisplayModeRef mode);
CF_EXPORT double CGDisplayModeGetRefreshRate(CGDisplayModeRef mode);
CF_EXPORT int32_t CGDisplayModeGetIODisplayModeID(CGDisplayModeRef mode);
CF_EXPORT bool CGDisplayModeIsUsableForDesktopGUI(CGDisplayModeRef mode);

// Gamma transfer tables.
CF_EXPORT uint32_t CGDisplayGammaTableCapacity(CGDirectDisplayID display);
CF_EXPORT CGError CGSetDisplayTransferByTable(CGDirectDisplayID display, uint32_t tableSize,
                                              const CGGammaValue* redTable,
                                              const CGGammaValue* greenTable,
                                              const CGGammaValue* blueTable);
CF_EXPORT void CGDisplayRestoreColorSyncSettings(void);

CF_EXTERN_C_END
