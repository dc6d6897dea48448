#include "MacLidSensor.h"

#include <vector>

#include "decode/LidValue.h"

namespace lumora::mac {

namespace {

// Asks the device itself for the element's current value instead of the last one it sent.
constexpr IOOptionBits kGetValueWithUpdate = 0x00020000;

CFRef<CFDictionaryRef> lidMatching() {
    const int page = static_cast<int>(kSensorUsagePage);
    const int usage = static_cast<int>(kLidSensorUsage);
    CFRef<CFNumberRef> pageNumber(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &page));
    CFRef<CFNumberRef> usageNumber(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &usage));
    CFRef<CFStringRef> pageKey = makeCFString(kIOHIDPrimaryUsagePageKey);
    CFRef<CFStringRef> usageKey = makeCFString(kIOHIDPrimaryUsageKey);
    const void* keys[] = {pageKey.get(), usageKey.get()};
    const void* values[] = {pageNumber.get(), usageNumber.get()};
    return CFRef<CFDictionaryRef>(CFDictionaryCreate(kCFAllocatorDefault, keys, values, 2,
                                                     &kCFTypeDictionaryKeyCallBacks,
                                                     &kCFTypeDictionaryValueCallBacks));
}

CFRef<IOHIDManagerRef> makeManager() {
    CFRef<IOHIDManagerRef> manager(IOHIDManagerCreate(kCFAllocatorDefault, kIOHIDOptionsTypeNone));
    if (!manager) return manager;
    CFRef<CFDictionaryRef> matching = lidMatching();
    IOHIDManagerSetDeviceMatching(manager.get(), matching.get());
    return manager;
}

std::vector<IOHIDDeviceRef> devicesOf(const CFRef<CFSetRef>& set) {
    std::vector<IOHIDDeviceRef> devices;
    if (!set) return devices;
    std::vector<const void*> values(static_cast<std::size_t>(CFSetGetCount(set.get())));
    CFSetGetValues(set.get(), values.data());
    for (const void* value : values)
        devices.push_back(static_cast<IOHIDDeviceRef>(const_cast<void*>(value)));
    return devices;
}

std::optional<LidReading> readElement(IOHIDDeviceRef device, IOHIDElementRef element, bool fresh) {
    const std::uint32_t page = IOHIDElementGetUsagePage(element);
    const std::uint32_t usage = IOHIDElementGetUsage(element);
    if (page != kSensorUsagePage || usage != kLidAngleUsage) return std::nullopt;
    IOHIDValueRef value = nullptr;
    if (fresh) {
        if (IOHIDDeviceGetValueWithOptions(device, element, &value, kGetValueWithUpdate) ==
                kIOReturnSuccess &&
            value) {
            if (auto reading = decodeLidValue(page, usage, IOHIDValueGetIntegerValue(value)))
                return reading;
        }
        value = nullptr;
    }
    // The value the device reported last, kept by the manager.
    if (IOHIDDeviceGetValue(device, element, &value) != kIOReturnSuccess || !value)
        return std::nullopt;
    return decodeLidValue(page, usage, IOHIDValueGetIntegerValue(value));
}

}  // namespace

MacLidSensor::~MacLidSensor() {
    if (!manager_) return;
    IOHIDManagerRegisterInputValueCallback(manager_.get(), nullptr, nullptr);
    if (scheduled_) {
        IOHIDManagerUnscheduleFromRunLoop(manager_.get(), CFRunLoopGetMain(),
                                          kCFRunLoopCommonModes);
    }
    IOHIDManagerClose(manager_.get(), kIOHIDOptionsTypeNone);
}

bool MacLidSensor::present() {
    CFRef<IOHIDManagerRef> manager = makeManager();
    if (!manager) return false;
    CFRef<CFSetRef> devices(IOHIDManagerCopyDevices(manager.get()));
    return devices && CFSetGetCount(devices.get()) > 0;
}

std::optional<std::int32_t> MacLidSensor::open(ChangeHandler onChange) {
    manager_ = makeManager();
    if (!manager_) return std::nullopt;
    onChange_ = std::move(onChange);
    IOHIDManagerRegisterInputValueCallback(manager_.get(), &MacLidSensor::onValue, this);
    // Common modes: the angle keeps arriving while a menu is open or a slider is dragged.
    IOHIDManagerScheduleWithRunLoop(manager_.get(), CFRunLoopGetMain(), kCFRunLoopCommonModes);
    scheduled_ = true;
    return static_cast<std::int32_t>(IOHIDManagerOpen(manager_.get(), kIOHIDOptionsTypeNone));
}

LidReading MacLidSensor::read(bool fresh) {
    LidReading last;
    if (!manager_) return last;
    const CFRef<CFSetRef> set(IOHIDManagerCopyDevices(manager_.get()));
    for (IOHIDDeviceRef device : devicesOf(set)) {
        const CFRef<CFArrayRef> elements(
            IOHIDDeviceCopyMatchingElements(device, nullptr, kIOHIDOptionsTypeNone));
        if (!elements) continue;
        for (CFIndex i = 0; i < CFArrayGetCount(elements.get()); ++i) {
            auto element = static_cast<IOHIDElementRef>(
                const_cast<void*>(CFArrayGetValueAtIndex(elements.get(), i)));
            // Every sensor is read; the last good reading wins.
            if (auto reading = readElement(device, element, fresh)) last = *reading;
        }
    }
    return last;
}

void MacLidSensor::onValue(void* context, IOReturn result, void* /*sender*/, IOHIDValueRef value) {
    if (result != kIOReturnSuccess || !value) return;
    auto* self = static_cast<MacLidSensor*>(context);
    IOHIDElementRef element = IOHIDValueGetElement(value);
    if (!element || !self->onChange_) return;
    const auto reading =
        decodeLidValue(IOHIDElementGetUsagePage(element), IOHIDElementGetUsage(element),
                       IOHIDValueGetIntegerValue(value));
    if (reading) self->onChange_(*reading);
}

}  // namespace lumora::mac
