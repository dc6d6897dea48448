#include "MacAVServices.h"

#include <IOKit/IOKitLib.h>

#include <limits>
#include <vector>

#include "CFRef.h"
#include "PrivateSymbols.h"

namespace lumora::mac {

namespace {

constexpr const char* kAVServiceProxyClass = "DCPAVServiceProxy";
// The registry property that tells an external display pipe from the built-in panel's.
constexpr const char* kLocationProperty = "Location";
constexpr const char* kExternalLocation = "External";
// Status answered when an entry point is missing or a buffer does not fit a transfer.
constexpr I2CStatus kTransferUnavailable = static_cast<I2CStatus>(kIOReturnUnsupported);

// One opened AV service; released with the channel.
class MacAVChannel final : public AVChannel {
  public:
    MacAVChannel(MacAVServices::ServiceRef service, MacAVServices::ReadI2C read,
                 MacAVServices::WriteI2C write)
        : service_(service), read_(read), write_(write) {}
    ~MacAVChannel() override { CFRelease(service_); }
    MacAVChannel(const MacAVChannel&) = delete;
    MacAVChannel& operator=(const MacAVChannel&) = delete;

    I2CStatus readI2C(std::uint8_t chip, std::uint8_t dataAddress,
                      std::span<std::uint8_t> buffer) override {
        if (!read_ || buffer.size() > std::numeric_limits<std::uint32_t>::max())
            return kTransferUnavailable;
        return read_(service_, chip, dataAddress, buffer.data(),
                     static_cast<std::uint32_t>(buffer.size()));
    }

    I2CStatus writeI2C(std::uint8_t chip, std::uint8_t dataAddress,
                       std::span<const std::uint8_t> bytes) override {
        if (!write_ || bytes.size() > std::numeric_limits<std::uint32_t>::max())
            return kTransferUnavailable;
        // The entry point takes a mutable buffer; it gets its own copy of the packet.
        std::vector<std::uint8_t> packet(bytes.begin(), bytes.end());
        return write_(service_, chip, dataAddress, packet.data(),
                      static_cast<std::uint32_t>(packet.size()));
    }

  private:
    MacAVServices::ServiceRef service_;
    MacAVServices::ReadI2C read_;
    MacAVServices::WriteI2C write_;
};

bool isExternal(io_registry_entry_t entry) {
    CFRef<CFStringRef> key = makeCFString(kLocationProperty);
    CFRef<CFTypeRef> location(
        IORegistryEntryCreateCFProperty(entry, key.get(), kCFAllocatorDefault, 0));
    return stringFromCF(location.get()) == kExternalLocation;
}

}  // namespace

MacAVServices::MacAVServices() {
    // IOKit is linked, so these are looked up among the loaded images.
    create_ = bindSymbol<CreateWithService>(nullptr, "IOAVServiceCreateWithService");
    read_ = bindSymbol<ReadI2C>(nullptr, "IOAVServiceReadI2C");
    write_ = bindSymbol<WriteI2C>(nullptr, "IOAVServiceWriteI2C");
}

std::vector<AVServiceEntry> MacAVServices::entries() const {
    std::vector<AVServiceEntry> out;
    io_iterator_t iterator = 0;
    // The matching dictionary is consumed by the call, also when it fails.
    if (IOServiceGetMatchingServices(kIOMainPortDefault, IOServiceMatching(kAVServiceProxyClass),
                                     &iterator) != KERN_SUCCESS) {
        return out;
    }
    while (io_object_t entry = IOIteratorNext(iterator)) {
        std::uint64_t entryID = 0;
        if (IORegistryEntryGetRegistryEntryID(entry, &entryID) == KERN_SUCCESS) {
            out.push_back(
                {.external = isExternal(entry), .display = std::nullopt, .handle = entryID});
        }
        IOObjectRelease(entry);
    }
    IOObjectRelease(iterator);
    return out;
}

std::shared_ptr<AVChannel> MacAVServices::create(const AVServiceEntry& entry) {
    if (!create_) return nullptr;
    // Consumes the matching dictionary; nothing when the entry has left the registry.
    io_service_t service =
        IOServiceGetMatchingService(kIOMainPortDefault, IORegistryEntryIDMatching(entry.handle));
    if (!service) return nullptr;
    ServiceRef opened = create_(kCFAllocatorDefault, service);
    IOObjectRelease(service);
    if (!opened) return nullptr;
    return std::make_shared<MacAVChannel>(opened, read_, write_);
}

}  // namespace lumora::mac
