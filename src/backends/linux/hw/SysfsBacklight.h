#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "hw/SysfsFiles.h"
#include "platform/Backlight.h"

namespace lumora::lx {

// The built-in panel's backlight from /sys/class/backlight. The device is chosen once, as the
// kernel documents: a "firmware" interface before a "platform" one before a "raw" one, by
// name within a type. Levels 0…1 map onto 0…max_brightness.
class SysfsBacklight final : public Backlight {
  public:
    // Writes a raw level for a backlight device (logind's Session.SetBrightness); true when
    // it went through.
    using Setter = std::function<bool(const std::string& device, std::uint32_t raw)>;

    struct Options {
        std::filesystem::path sysfsRoot = kDefaultSysfsRoot;
        // Without a setter the brightness file is written directly, when it is writable.
        Setter setter;
    };

    // Statuses of get() and set() besides 0.
    static constexpr std::int32_t kNoDevice = 1;
    static constexpr std::int32_t kUnreadable = 2;  // missing files or junk in them
    static constexpr std::int32_t kNotWritten = 3;

    explicit SysfsBacklight(Options options);

    [[nodiscard]] bool hasGet() const override { return device_.has_value(); }
    [[nodiscard]] bool hasSet() const override;
    [[nodiscard]] bool hasCanChange() const override { return device_.has_value(); }
    // The display is not consulted: there is one built-in panel.
    std::int32_t get(DisplayID id, float& level) override;
    std::int32_t set(DisplayID id, float level) override;
    bool canChange(DisplayID id) override;

    // The chosen device's name ("intel_backlight"), when there is one.
    [[nodiscard]] const std::optional<std::string>& device() const { return device_; }

  private:
    [[nodiscard]] std::filesystem::path file(const char* name) const;
    [[nodiscard]] std::optional<std::uint32_t> maximum() const;

    Options options_;
    std::optional<std::string> device_;
};

}  // namespace lumora::lx
