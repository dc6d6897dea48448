#pragma once

#include "platform/VirtualDisplays.h"

namespace lumora::mac {

// Virtual displays through the window server's private CGVirtualDisplay classes, available
// only when every message Lumora sends is answered.
class MacVirtualDisplays final : public VirtualDisplays {
  public:
    MacVirtualDisplays();

    [[nodiscard]] bool available() const override { return available_; }
    std::unique_ptr<VirtualDisplayHandle> create(const VirtualDisplayDescriptor& d) override;

  private:
    std::unique_ptr<VirtualDisplayHandle> createChecked(const VirtualDisplayDescriptor& d);

    bool available_ = false;
};

}  // namespace lumora::mac
