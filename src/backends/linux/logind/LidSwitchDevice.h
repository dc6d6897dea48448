#pragma once

#include <filesystem>

namespace lumora::lx {

// Whether an input device under `inputDevices` (normally /sys/class/input) has a lid switch,
// the kernel's SW_LID. logind finds the lid the same way; its LidClosed property alone cannot
// tell a machine without a lid from an open one.
bool findLidSwitch(const std::filesystem::path& inputDevices);

}  // namespace lumora::lx
