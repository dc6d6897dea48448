#pragma once
// Objects of the system libraries: Objective-C objects in Objective-C, opaque pointers in C.

#ifdef __OBJC__
#import <objc/NSObject.h>
#endif
