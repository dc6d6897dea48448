#pragma once

#import <Foundation/NSObjCRuntime.h>

@class NSString;

@interface NSError : NSObject
@property(readonly) NSInteger code;
@property(readonly, copy) NSString* localizedDescription;
@end
