#pragma once

#include <IOKit/hid/IOHIDBase.h>

CF_EXTERN_C_BEGIN

IOHIDElementRef IOHIDValueGetElement(IOHIDValueRef value);
CFIndex IOHIDValueGetIntegerValue(IOHIDValueRef value);

CF_EXTERN_C_END
