#pragma once

#import <Foundation/Foundation.h>

#define APPKIT_EXTERN FOUNDATION_EXPORT

@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
@property(readonly, strong) NSNotificationCenter* notificationCenter;
@end

APPKIT_EXTERN NSNotificationName const NSWorkspaceDidWakeNotification;
APPKIT_EXTERN NSNotificationName const NSWorkspaceScreensDidWakeNotification;
