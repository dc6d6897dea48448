#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace lumora::lx {

// Where the kernel publishes devices; tests point them at temporary trees.
inline const std::filesystem::path kDefaultSysfsRoot = "/sys";
inline const std::filesystem::path kDefaultDevRoot = "/dev";

// A sysfs attribute's text without its trailing newline and blanks. Nothing when the file
// cannot be read or is larger than any attribute the kernel writes.
std::optional<std::string> readAttribute(const std::filesystem::path& file);

// A plain decimal count (digits only) within the kernel's int range; nothing otherwise.
std::optional<std::uint32_t> parseCount(std::string_view text);

}  // namespace lumora::lx
