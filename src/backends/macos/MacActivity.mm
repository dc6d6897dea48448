#include "MacActivity.h"

#import <Foundation/Foundation.h>

namespace lumora::mac {

struct MacActivity::Token {
    id<NSObject> activity;
};

MacActivity::MacActivity() : token_(std::make_unique<Token>()) {
    token_->activity = [NSProcessInfo.processInfo
        beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                          reason:@"Lumora follows the lid and the displays"];
}

MacActivity::~MacActivity() {
    if (token_->activity) [NSProcessInfo.processInfo endActivity:token_->activity];
}

}  // namespace lumora::mac
