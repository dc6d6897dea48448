#include "MacUrlEvents.h"

#import <AppKit/AppKit.h>
#import <Carbon/Carbon.h>

@interface LMURLEventReceiver : NSObject
- (instancetype)initWithHandler:(lumora::mac::MacUrlEvents::Handler)handler;
- (void)handleURLEvent:(NSAppleEventDescriptor*)event withReplyEvent:(NSAppleEventDescriptor*)reply;
@end

@implementation LMURLEventReceiver {
    lumora::mac::MacUrlEvents::Handler _handler;
}

- (instancetype)initWithHandler:(lumora::mac::MacUrlEvents::Handler)handler {
    if ((self = [super init])) _handler = std::move(handler);
    return self;
}

- (void)handleURLEvent:(NSAppleEventDescriptor*)event
        withReplyEvent:(NSAppleEventDescriptor*)reply {
    (void)reply;
    NSString* url = [event paramDescriptorForKeyword:keyDirectObject].stringValue;
    if (url.UTF8String && _handler) _handler(url.UTF8String);
}

@end

namespace lumora::mac {

// The event manager does not retain its handler object; this does.
struct MacUrlEvents::Receiver {
    LMURLEventReceiver* object = nil;
};

MacUrlEvents::MacUrlEvents(Handler handler) : receiver_(std::make_unique<Receiver>()) {
    receiver_->object = [[LMURLEventReceiver alloc] initWithHandler:std::move(handler)];
    [NSAppleEventManager.sharedAppleEventManager setEventHandler:receiver_->object
                                                     andSelector:@selector(handleURLEvent:
                                                                           withReplyEvent:)
                                                   forEventClass:kInternetEventClass
                                                      andEventID:kAEGetURL];
}

MacUrlEvents::~MacUrlEvents() {
    [NSAppleEventManager.sharedAppleEventManager removeEventHandlerForEventClass:kInternetEventClass
                                                                      andEventID:kAEGetURL];
}

}  // namespace lumora::mac
