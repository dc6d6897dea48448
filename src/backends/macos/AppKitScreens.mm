#include "AppKitScreens.h"

#import <AppKit/AppKit.h>

#include "decode/Coordinates.h"

namespace lumora::mac {

namespace {

// The device description entry that names the screen's display.
NSString* const kScreenNumberKey = @"NSScreenNumber";

Rect rectFrom(NSRect r) {
    return {{r.origin.x, r.origin.y}, {r.size.width, r.size.height}};
}

// AppKit's origin is the bottom-left of the first screen, the one with the menu bar.
double primaryHeight() {
    NSScreen* primary = NSScreen.screens.firstObject;
    return primary ? primary.frame.size.height : 0;
}

}  // namespace

std::vector<Screen> appKitScreens() {
    std::vector<Screen> out;
    const double height = primaryHeight();
    for (NSScreen* screen in NSScreen.screens) {
        Screen s;
        id number = screen.deviceDescription[kScreenNumberKey];
        if ([number isKindOfClass:[NSNumber class]]) s.displayID = [number unsignedIntValue];
        NSString* name = screen.localizedName;
        if (name.UTF8String) s.localizedName = name.UTF8String;
        s.frame = frameFromAppKit(rectFrom(screen.frame), height);
        out.push_back(std::move(s));
    }
    return out;
}

std::optional<Point> appKitPointer() {
    if (NSScreen.screens.count == 0) return std::nullopt;
    const NSPoint location = NSEvent.mouseLocation;
    return pointFromAppKit({location.x, location.y}, primaryHeight());
}

}  // namespace lumora::mac
