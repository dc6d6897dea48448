#pragma once
// Display configuration transactions and the reconfiguration callback.

#include <CoreGraphics/CGDirectDisplay.h>

CF_EXTERN_C_BEGIN

typedef struct _CGDisplayConfigRef* CGDisplayConfigRef;

typedef uint32_t CGConfigureOption;
enum {
    kCGConfigureForAppOnly = 0,
    kCGConfigureForSession = 1,
    kCGConfigurePermanently = 2,
};

CF_EXPORT CGError CGBeginDisplayConfiguration(CGDisplayConfigRef* config);
CF_EXPORT CGError CGConfigureDisplayWithDisplayMode(CGDisplayConfigRef config,
                                                    CGDirectDisplayID display,
                                                    CGDisplayModeRef mode, CFDictionaryRef options);
CF_EXPORT CGError CGConfigureDisplayOrigin(CGDisplayConfigRef config, CGDirectDisplayID display,
                                           int32_t x, int32_t y);
CF_EXPORT CGError CGConfigureDisplayMirrorOfDisplay(CGDisplayConfigRef config,
                                                    CGDirectDisplayID display,
                                                    CGDirectDisplayID master);
CF_EXPORT CGError CGCompleteDisplayConfiguration(CGDisplayConfigRef config,
                                                 CGConfigureOption option);
CF_EXPORT CGError CGCancelDisplayConfiguration(CGDisplayConfigRef config);

typedef uint32_t CGDisplayChangeSummaryFlags;
typedef void (*CGDisplayReconfigurationCallBack)(CGDirectDisplayID display,
                                                 CGDisplayChangeSummaryFlags flags, void* userInfo);
CF_EXPORT CGError
CGDisplayRegisterReconfigurationCallback(CGDisplayReconfigurationCallBack callback, void* userInfo);
CF_EXPORT CGError CGDisplayRemoveReconfigurationCallback(CGDisplayReconfigurationCallBack callback,
                                                         void* userInfo);

CF_EXTERN_C_END
