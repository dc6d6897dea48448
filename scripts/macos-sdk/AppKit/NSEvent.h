#pragma once

#include <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

typedef enum NSEventType : NSUInteger {
    NSEventTypeKeyDown = 10,
    NSEventTypeKeyUp = 11,
    NSEventTypeFlagsChanged = 12,
    NSEventTypeSystemDefined = 14,
} NSEventType;

typedef enum NSEventModifierFlags : NSUInteger {
    NSEventModifierFlagCapsLock = 1 << 16,
    NSEventModifierFlagShift = 1 << 17,
    NSEventModifierFlagControl = 1 << 18,
    NSEventModifierFlagOption = 1 << 19,
    NSEventModifierFlagCommand = 1 << 20,
} NSEventModifierFlags;

typedef enum NSEventSubtype : short {
    NSEventSubtypeWindowExposed = 0,
} NSEventSubtype;

@interface NSEvent : NSObject
+ (NSEvent*)eventWithCGEvent:(CGEventRef)cgEvent;
@property(class, readonly) NSPoint mouseLocation;
@property(readonly) NSEventType type;
@property(readonly) NSEventSubtype subtype;
@property(readonly) NSInteger data1;
@property(readonly) NSEventModifierFlags modifierFlags;
@end
