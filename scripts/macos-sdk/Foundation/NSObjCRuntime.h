#pragma once

#include <objc/NSObject.h>
#include <stdint.h>

typedef long NSInteger;
typedef unsigned long NSUInteger;

// Under C++: the option type, then an enumeration of its flags.
#define NS_OPTIONS(_type, _name) \
    _type _name;                 \
    enum : _type

#ifdef __cplusplus
#define FOUNDATION_EXPORT extern "C"
#else
#define FOUNDATION_EXPORT extern
#endif

@class NSString;

FOUNDATION_EXPORT Class NSClassFromString(NSString* aClassName);
