#pragma once

#include <mach/mach_types.h>

typedef kern_return_t IOReturn;

// Error codes are built from a system, a subsystem and a code.
#define err_system(x) ((signed)((((unsigned)(x)) & 0x3f) << 26))
#define err_sub(x) (((x)&0xfff) << 14)
#define sys_iokit err_system(0x38)
#define sub_iokit_common err_sub(0)
#define iokit_common_err(return ) (sys_iokit | sub_iokit_common | (return ))

#define kIOReturnSuccess KERN_SUCCESS
#define kIOReturnError iokit_common_err(0x2bc)
#define kIOReturnUnsupported iokit_common_err(0x2c7)
#define kIOReturnNotOpen iokit_common_err(0x2cd)
