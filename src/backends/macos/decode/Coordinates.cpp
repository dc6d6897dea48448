#include "decode/Coordinates.h"

namespace lumora::mac {

Point pointFromAppKit(Point appKit, double primaryHeight) {
    return {appKit.x, primaryHeight - appKit.y};
}

Rect frameFromAppKit(Rect appKit, double primaryHeight) {
    // The frame's AppKit origin is its bottom-left corner; the top-left is a height above.
    return {{appKit.origin.x, primaryHeight - (appKit.origin.y + appKit.size.height)}, appKit.size};
}

}  // namespace lumora::mac
