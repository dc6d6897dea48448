#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "hw/I2cDevice.h"
#include "hw/SysfsFiles.h"
#include "platform/AVServices.h"
#include "platform/Types.h"

namespace lumora::lx {

// DDC/CI channels over the display buses: one entry per bus (handle = bus number), opened
// through /dev/i2c-N. A bus that cannot be opened explains why once, through `log`, and keeps
// the explanation in problems() until it opens.
class LinuxAVServices final : public AVServices {
  public:
    struct Options {
        std::filesystem::path sysfsRoot = kDefaultSysfsRoot;
        std::filesystem::path devRoot = kDefaultDevRoot;
        // The display a DRM connector drives, as the display server knows it. Called on the
        // DDC queue, so it must be safe there.
        std::function<std::optional<DisplayID>(const std::string& connector)> displayFor;
        std::function<void(const std::string& line)> log;
        std::shared_ptr<I2cDevices> devices = systemI2cDevices();
    };

    explicit LinuxAVServices(Options options);

    [[nodiscard]] bool canCreate() const override { return true; }
    [[nodiscard]] bool canRead() const override { return true; }
    [[nodiscard]] bool canWrite() const override { return true; }
    [[nodiscard]] std::vector<AVServiceEntry> entries() const override;
    std::shared_ptr<AVChannel> create(const AVServiceEntry& entry) override;

    // One line per bus that cannot be opened now, by bus number. Safe from any thread.
    [[nodiscard]] std::vector<std::string> problems() const;

  private:
    [[nodiscard]] std::string describe(unsigned bus) const;
    void report(unsigned bus, const std::string& line);

    Options options_;
    mutable std::mutex mutex_;
    // What the last discovery called each bus, for the messages.
    mutable std::map<unsigned, std::string> connectors_;
    std::map<unsigned, std::string> problems_;
};

}  // namespace lumora::lx
