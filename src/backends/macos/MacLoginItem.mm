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

bool MacLoginItem::setEnabled(bool enabled) {
    SMAppService* service = SMAppService.mainAppService;
    NSError* error = nil;
    return enabled ? [service registerAndReturnError:&error]
                   : [service unregisterAndReturnError:&error];
}

bool MacLoginItem::registerAtFirstLaunch() {
    if (launchAgentInstalled()) return false;
    return setEnabled(true);
}

}  // namespace lumora::mac
