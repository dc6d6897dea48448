#pragma once

#include <CoreServices/CoreServices.h>
#import <Foundation/NSString.h>

@interface NSAppleEventDescriptor : NSObject
- (NSAppleEventDescriptor*)paramDescriptorForKeyword:(AEKeyword)keyword;
@property(readonly, copy) NSString* stringValue;
@end
