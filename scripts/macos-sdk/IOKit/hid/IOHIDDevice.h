#pragma once

#include <IOKit/hid/IOHIDBase.h>

CF_EXTERN_C_BEGIN

CFArrayRef IOHIDDeviceCopyMatchingElements(IOHIDDeviceRef device, CFDictionaryRef matching,
                                           IOOptionBits options);
IOReturn IOHIDDeviceGetValue(IOHIDDeviceRef device, IOHIDElementRef element, IOHIDValueRef* pValue);
IOReturn IOHIDDeviceGetValueWithOptions(IOHIDDeviceRef device, IOHIDElementRef element,
                                        IOHIDValueRef* pValue, uint32_t options);

CF_EXTERN_C_END
