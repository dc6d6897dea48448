#pragma once

#import <Foundation/NSObjCRuntime.h>

@interface NSString : NSObject
+ (instancetype)stringWithUTF8String:(const char*)nullTerminatedCString;
@property(readonly) const char* UTF8String;
@property(readonly) NSUInteger length;
@end
