#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "logind/LogindClient.h"

namespace lumora::lx {

// Writes a backlight level through the user's logind session, which may set the brightness of
// the seat's panels, so no write access to /sys/class/backlight is needed.
class LogindBacklightWriter {
  public:
    explicit LogindBacklightWriter(std::shared_ptr<LogindClient> logind);

    [[nodiscard]] bool available() const { return logind_->available(); }

    // `device`: the name under /sys/class/backlight; `raw`: the device's own scale. A refusal
    // is logged and returns false.
    bool setBrightness(const std::string& device, std::uint32_t raw);

  private:
    std::shared_ptr<LogindClient> logind_;
};

}  // namespace lumora::lx
