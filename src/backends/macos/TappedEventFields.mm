#include "TappedEventFields.h"

#import <AppKit/AppKit.h>

namespace lumora::mac {

TappedEvent tappedEventFields(CGEventType type, CGEventRef event) {
    TappedEvent fields;
    fields.type = static_cast<std::uint32_t>(type);
    if (fields.type != kSystemDefinedEventType || !event) return fields;
    NSEvent* appKitEvent = [NSEvent eventWithCGEvent:event];
    if (!appKitEvent || appKitEvent.type != NSEventTypeSystemDefined) {
        fields.type = 0;  // unreadable: decodes to nothing and is passed on
        return fields;
    }
    fields.subtype = static_cast<std::int16_t>(appKitEvent.subtype);
    fields.data1 = appKitEvent.data1;
    fields.modifierFlags = appKitEvent.modifierFlags;
    return fields;
}

}  // namespace lumora::mac
