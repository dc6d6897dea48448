#pragma once

#import <AppKit/NSEvent.h>
#import <AppKit/NSScreen.h>
#import <AppKit/NSWorkspace.h>
#import <Foundation/Foundation.h>
