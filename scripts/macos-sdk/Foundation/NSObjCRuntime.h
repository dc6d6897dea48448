#pragma once

#include <objc/NSObject.h>

typedef long NSInteger;
typedef unsigned long NSUInteger;

#ifdef __cplusplus
#define FOUNDATION_EXPORT extern "C"
#else
#define FOUNDATION_EXPORT extern
#endif

@class NSString;

FOUNDATION_EXPORT Class NSClassFromString(NSString* aClassName);
