#pragma once

#import <Foundation/NSObjCRuntime.h>

@interface NSError : NSObject
@property(readonly) NSInteger code;
@end
