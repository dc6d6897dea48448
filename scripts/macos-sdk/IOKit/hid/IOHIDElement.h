#pragma once

#include <IOKit/hid/IOHIDBase.h>

CF_EXTERN_C_BEGIN

uint32_t IOHIDElementGetUsagePage(IOHIDElementRef element);
uint32_t IOHIDElementGetUsage(IOHIDElementRef element);

CF_EXTERN_C_END
