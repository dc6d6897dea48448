#pragma once
// Event taps.

#include <CoreGraphics/CGError.h>

CF_EXTERN_C_BEGIN

typedef struct __CGEvent* CGEventRef;
typedef struct __CGEventTapProxy* CGEventTapProxy;
typedef uint64_t CGEventMask;

typedef enum CGEventType : uint32_t {
    kCGEventNull = 0,
    kCGEventKeyDown = 10,
    kCGEventKeyUp = 11,
    kCGEventFlagsChanged = 12,
    kCGEventTapDisabledByTimeout = 0xFFFFFFFE,
    kCGEventTapDisabledByUserInput = 0xFFFFFFFF,
} CGEventType;

typedef enum CGEventTapLocation : uint32_t {
    kCGHIDEventTap = 0,
    kCGSessionEventTap = 1,
    kCGAnnotatedSessionEventTap = 2,
} CGEventTapLocation;

typedef enum CGEventTapPlacement : uint32_t {
    kCGHeadInsertEventTap = 0,
    kCGTailAppendEventTap = 1,
} CGEventTapPlacement;

typedef enum CGEventTapOptions : uint32_t {
    kCGEventTapOptionDefault = 0x00000000,
    kCGEventTapOptionListenOnly = 0x00000001,
} CGEventTapOptions;

#define CGEventMaskBit(eventType) ((CGEventMask)1 << (eventType))

typedef CGEventRef (*CGEventTapCallBack)(CGEventTapProxy proxy, CGEventType type, CGEventRef event,
                                         void* userInfo);

CF_EXPORT CFMachPortRef CGEventTapCreate(CGEventTapLocation tap, CGEventTapPlacement place,
                                         CGEventTapOptions options, CGEventMask eventsOfInterest,
                                         CGEventTapCallBack callback, void* userInfo);
CF_EXPORT void CGEventTapEnable(CFMachPortRef tap, bool enable);

CF_EXTERN_C_END
