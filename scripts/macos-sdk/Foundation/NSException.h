#pragma once

#import <Foundation/NSObjCRuntime.h>

@class NSString;

@interface NSException : NSObject
@property(readonly, copy) NSString* name;
@property(readonly, copy) NSString* reason;
@end
