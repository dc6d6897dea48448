#include "MacSystemEvents.h"

#import <AppKit/AppKit.h>

#include <map>

namespace lumora::mac {

struct MacSystemEvents::Observers {
    std::map<Token, id> tokens;
};

MacSystemEvents::MacSystemEvents() : observers_(std::make_unique<Observers>()) {}

MacSystemEvents::~MacSystemEvents() {
    NSNotificationCenter* center = NSWorkspace.sharedWorkspace.notificationCenter;
    for (const auto& [token, observer] : observers_->tokens)
        [center removeObserver:observer];
}

SystemEvents::Token MacSystemEvents::addObserver(SystemEvent event, Handler handler) {
    NSNotificationName name = event == SystemEvent::didWake ? NSWorkspaceDidWakeNotification
                                                            : NSWorkspaceScreensDidWakeNotification;
    auto shared = std::make_shared<Handler>(std::move(handler));
    id observer = [NSWorkspace.sharedWorkspace.notificationCenter
        addObserverForName:name
                    object:nil
                     queue:NSOperationQueue.mainQueue
                usingBlock:^(NSNotification*) {
                  (*shared)();
                }];
    const Token token = next_++;
    observers_->tokens.emplace(token, observer);
    return token;
}

void MacSystemEvents::removeObserver(Token token) {
    auto it = observers_->tokens.find(token);
    if (it == observers_->tokens.end()) return;
    [NSWorkspace.sharedWorkspace.notificationCenter removeObserver:it->second];
    observers_->tokens.erase(it);
}

}  // namespace lumora::mac
