#pragma once
// Power-management assertions.

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOReturn.h>

CF_EXTERN_C_BEGIN

typedef uint32_t IOPMAssertionID;
typedef uint32_t IOPMAssertionLevel;

#define kIOPMNullAssertionID 0
enum {
    kIOPMAssertionLevelOff = 0,
    kIOPMAssertionLevelOn = 255,
};

typedef enum {
    kIOPMUserActiveLocal,
    kIOPMUserActiveRemote,
} IOPMUserActiveType;

IOReturn IOPMAssertionCreateWithName(CFStringRef AssertionType, IOPMAssertionLevel AssertionLevel,
                                     CFStringRef AssertionName, IOPMAssertionID* AssertionID);
IOReturn IOPMAssertionRelease(IOPMAssertionID AssertionID);
IOReturn IOPMAssertionDeclareUserActivity(CFStringRef AssertionName, IOPMUserActiveType userType,
                                          IOPMAssertionID* AssertionID);

CF_EXTERN_C_END
