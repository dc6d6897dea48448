#pragma once

#import <Foundation/NSObjCRuntime.h>

@interface NSValue : NSObject
@end

@interface NSNumber : NSValue
@property(readonly) unsigned int unsignedIntValue;
@end
