#include "MacBacklight.h"

#include "PrivateSymbols.h"

namespace lumora::mac {

namespace {

// Status answered for a call whose entry point is missing (any non-zero status is a failure).
constexpr std::int32_t kMissingEntryPoint = -1;

}  // namespace

MacBacklight::MacBacklight() {
    void* framework = openFramework(kDisplayServicesFramework);
    get_ = bindSymbol<GetBrightness>(framework, "DisplayServicesGetBrightness");
    set_ = bindSymbol<SetBrightness>(framework, "DisplayServicesSetBrightness");
    canChange_ = bindSymbol<CanChangeBrightness>(framework, "DisplayServicesCanChangeBrightness");
}

std::int32_t MacBacklight::get(DisplayID id, float& level) {
    if (!get_) return kMissingEntryPoint;
    float read = 0;
    const int status = get_(id, &read);
    if (status == 0) level = read;
    return status;
}

std::int32_t MacBacklight::set(DisplayID id, float level) {
    if (!set_) return kMissingEntryPoint;
    return set_(id, level);
}

bool MacBacklight::canChange(DisplayID id) {
    return canChange_ && canChange_(id);
}

}  // namespace lumora::mac
