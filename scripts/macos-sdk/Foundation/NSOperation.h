#pragma once

#import <Foundation/NSObjCRuntime.h>

@interface NSOperationQueue : NSObject
@property(class, readonly, strong) NSOperationQueue* mainQueue;
@end
