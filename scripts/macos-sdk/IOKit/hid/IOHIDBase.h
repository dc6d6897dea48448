#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOReturn.h>
#include <IOKit/IOTypes.h>

typedef struct __IOHIDManager* IOHIDManagerRef;
typedef struct __IOHIDDevice* IOHIDDeviceRef;
typedef struct __IOHIDElement* IOHIDElementRef;
typedef struct __IOHIDValue* IOHIDValueRef;

typedef void (*IOHIDValueCallback)(void* context, IOReturn result, void* sender,
                                   IOHIDValueRef value);

enum {
    kIOHIDOptionsTypeNone = 0x00,
    kIOHIDOptionsTypeSeizeDevice = 0x01,
};
