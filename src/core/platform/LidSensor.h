#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace lumora {

// HID usages of the lid-angle sensor. The sensor is a device of the HID sensor page; among
// its elements, one reports the hinge angle in whole degrees.
inline constexpr std::uint32_t kHidSensorPage = 0x20;
inline constexpr std::uint32_t kHidLidSensorDeviceUsage = 0x8A;  // the device to match
inline constexpr std::uint32_t kHidLidAngleUsage = 0x47F;        // the angle element

// One element of a matching device. The handle names device and element for the backend.
struct HidElement {
    std::uint32_t usagePage = 0;
    std::uint32_t usage = 0;
    std::uint64_t handle = 0;
    friend bool operator==(const HidElement&, const HidElement&) = default;
};

// The HID manager behind the lid-angle sensor: it matches devices of usage page
// kHidSensorPage and usage kHidLidSensorDeviceUsage and stays open for the owner's life.
class LidSensor {
  public:
    // usagePage and usage are the element's; value is its integer value.
    using ValueHandler =
        std::function<void(std::uint32_t usagePage, std::uint32_t usage, std::int64_t value)>;

    virtual ~LidSensor() = default;

    // Creates and opens the manager. Nothing when the platform cannot create a manager at all;
    // otherwise the open status (0 = ok). After a successful open, onValue hears every input
    // value event of any element of the matching devices, on the main thread. Called once.
    virtual std::optional<std::int32_t> open(ValueHandler onValue) = 0;
    // The elements of every matching device; empty before a successful open or without one.
    [[nodiscard]] virtual std::vector<HidElement> elements() const = 0;
    // askDevice: ask the device for a current value; otherwise read the value the manager
    // last received. Nothing when the read fails or yields no value.
    virtual std::optional<std::int64_t> getValue(const HidElement& element, bool askDevice) = 0;
};

}  // namespace lumora
