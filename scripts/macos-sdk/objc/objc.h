#pragma once
// Objective-C base types beyond the compiler's built-in id, Class and SEL.

typedef bool BOOL;  // a bool on arm64
#define YES __objc_yes
#define NO __objc_no

#ifdef __cplusplus
#define nil nullptr
#else
#define nil ((void*)0)
#endif
