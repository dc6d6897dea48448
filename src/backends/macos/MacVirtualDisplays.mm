#include "MacVirtualDisplays.h"

#import "CGVirtualDisplayPrivate.h"

#include <initializer_list>

namespace lumora::mac {

namespace {

NSString* const kDisplayClass = @"CGVirtualDisplay";
NSString* const kDescriptorClass = @"CGVirtualDisplayDescriptor";
NSString* const kSettingsClass = @"CGVirtualDisplaySettings";
NSString* const kModeClass = @"CGVirtualDisplayMode";

// Keeps the display object, and with it the display, alive.
class MacVirtualDisplayHandle final : public VirtualDisplayHandle {
  public:
    explicit MacVirtualDisplayHandle(CGVirtualDisplay* display) : display_(display) {}
    [[nodiscard]] DisplayID displayID() const override { return display_.displayID; }

  private:
    CGVirtualDisplay* display_;
};

// Every message Lumora sends to each class: a class renamed or changed in a system update is
// a missing capability, not an unrecognised selector that ends the process.
bool answers(NSString* className, std::initializer_list<SEL> selectors) {
    Class type = NSClassFromString(className);
    if (!type) return false;
    for (SEL selector : selectors) {
        if (![type instancesRespondToSelector:selector]) return false;
    }
    return true;
}

NSString* nameString(const std::string& name) {
    NSString* text = [NSString stringWithUTF8String:name.c_str()];
    return text ? text : @"Lumora";  // invalid UTF-8: a generic name rather than no display
}

}  // namespace

MacVirtualDisplays::MacVirtualDisplays() {
    available_ =
        answers(
            kDisplayClass,
            { @selector(initWithDescriptor:), @selector(applySettings:), @selector(displayID) }) &&
        answers(kDescriptorClass,
                {
                    @selector(init), @selector(setQueue:), @selector(setName:),
                        @selector(setMaxPixelsWide:), @selector(setMaxPixelsHigh:),
                        @selector(setSizeInMillimeters:), @selector(setVendorID:),
                        @selector(setProductID:), @selector(setSerialNum:),
                        @selector(setTerminationHandler:)
                }) &&
        answers(kSettingsClass, { @selector(init), @selector(setHiDPI:), @selector(setModes:) }) &&
        answers(kModeClass, { @selector(initWithWidth:height:refreshRate:) });
}

std::unique_ptr<VirtualDisplayHandle> MacVirtualDisplays::create(
    const VirtualDisplayDescriptor& d) {
    if (!available_ || d.maxPixelsWide == 0 || d.maxPixelsHigh == 0 || d.modes.empty())
        return nullptr;
    // The classes are private: an exception they raise means no display, never the end of
    // the agent.
    @try {
        return createChecked(d);
    } @catch (NSException*) {
        return nullptr;
    }
}

std::unique_ptr<VirtualDisplayHandle> MacVirtualDisplays::createChecked(
    const VirtualDisplayDescriptor& d) {
    CGVirtualDisplayDescriptor* descriptor = [[NSClassFromString(kDescriptorClass) alloc] init];
    // The system's callbacks for this display arrive on the main queue.
    descriptor.queue = dispatch_get_main_queue();
    descriptor.name = nameString(d.name);
    descriptor.maxPixelsWide = d.maxPixelsWide;
    descriptor.maxPixelsHigh = d.maxPixelsHigh;
    descriptor.sizeInMillimeters = CGSizeMake(d.sizeMillimeters.width, d.sizeMillimeters.height);
    descriptor.vendorID = d.vendor;
    descriptor.productID = d.product;
    descriptor.serialNum = d.serial;
    // The system may end the display on its own; the next refresh sees it gone.
    descriptor.terminationHandler = ^(id, id) {
    };

    CGVirtualDisplay* display =
        [[NSClassFromString(kDisplayClass) alloc] initWithDescriptor:descriptor];
    if (!display) return nullptr;

    NSMutableArray<CGVirtualDisplayMode*>* modes = [NSMutableArray array];
    for (const auto& [width, height] : d.modes) {
        CGVirtualDisplayMode* mode =
            [[NSClassFromString(kModeClass) alloc] initWithWidth:width
                                                          height:height
                                                     refreshRate:d.refresh];
        if (mode) [modes addObject:mode];
    }
    CGVirtualDisplaySettings* settings = [[NSClassFromString(kSettingsClass) alloc] init];
    settings.hiDPI = d.hiDPI ? 1 : 0;
    settings.modes = modes;
    // Refused settings: dropping the object removes the half-made display again.
    if (modes.count == 0 || ![display applySettings:settings]) return nullptr;
    return std::make_unique<MacVirtualDisplayHandle>(display);
}

}  // namespace lumora::mac
