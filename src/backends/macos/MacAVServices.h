#pragma once

#include "platform/AVServices.h"

namespace lumora::mac {

// DDC/CI through the AV services of the display pipes: the registry's "DCPAVServiceProxy"
// entries, opened and driven by IOAVService entry points bound at run time.
class MacAVServices final : public AVServices {
  public:
    MacAVServices();

    [[nodiscard]] bool canCreate() const override { return create_ != nullptr; }
    [[nodiscard]] bool canRead() const override { return read_ != nullptr; }
    [[nodiscard]] bool canWrite() const override { return write_ != nullptr; }
    // The handle of an entry is its registry entry ID, so a channel is opened from the
    // registry as it is now, never from an object that may have gone.
    [[nodiscard]] std::vector<AVServiceEntry> entries() const override;
    std::shared_ptr<AVChannel> create(const AVServiceEntry& entry) override;

    // The entry points, declared here because no public header has them.
    using ServiceRef = const void*;
    using CreateWithService = ServiceRef (*)(const void* allocator, std::uint32_t service);
    using ReadI2C = std::int32_t (*)(ServiceRef service, std::uint32_t chipAddress,
                                     std::uint32_t dataAddress, void* buffer, std::uint32_t length);
    using WriteI2C = std::int32_t (*)(ServiceRef service, std::uint32_t chipAddress,
                                      std::uint32_t dataAddress, void* buffer,
                                      std::uint32_t length);

  private:
    CreateWithService create_ = nullptr;
    ReadI2C read_ = nullptr;
    WriteI2C write_ = nullptr;
};

}  // namespace lumora::mac
