#include "MacLoginItem.h"

#import <ServiceManagement/ServiceManagement.h>

#include <system_error>

#include "decode/LoginItemState.h"

namespace lumora::mac {

MacLoginItem::MacLoginItem(std::filesystem::path home, std::string bundleIdentifier)
    : launchAgent_(launchAgentFile(home, bundleIdentifier)) {}

bool MacLoginItem::launchAgentInstalled() const {
    std::error_code ec;
    return std::filesystem::exists(launchAgent_, ec);
}

bool MacLoginItem::enabled() const {
    return loginItemOn(static_cast<std::int64_t>(SMAppService.mainAppService.status));
}

bool MacLoginItem::awaitingApproval() const {
    return static_cast<LoginItemStatus>(SMAppService.mainAppService.status) ==
           LoginItemStatus::requiresApproval;
}

bool MacLoginItem::setEnabled(bool enabled, std::string* why) {
    SMAppService* service = SMAppService.mainAppService;
    NSError* error = nil;
    const bool done = enabled ? [service registerAndReturnError:&error]
                              : [service unregisterAndReturnError:&error];
    if (!done) {
        if (why) {
            const char* text = error ? error.localizedDescription.UTF8String : nullptr;
            *why = text ? text : "the login-item service refused";
        }
        return false;
    }
    if (enabled &&
        static_cast<LoginItemStatus>(service.status) == LoginItemStatus::requiresApproval) {
        if (why) *why = "waiting for approval in System Settings, Login Items";
        return false;
    }
    return true;
}

void MacLoginItem::openApprovalSettings() {
    [SMAppService openSystemSettingsLoginItems];
}

bool MacLoginItem::registerAtFirstLaunch() {
    if (launchAgentInstalled()) return false;
    return setEnabled(true);
}

}  // namespace lumora::mac
