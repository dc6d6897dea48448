#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace lumora::lx {

// The text of a small sysfs attribute without surrounding white space; nothing when it cannot
// be read.
std::optional<std::string> readSysfsText(const std::filesystem::path& file);

// Numbers as sysfs writes them; nothing unless the whole text is one number.
std::optional<long long> parseInteger(std::string_view text, int base = 10);
std::optional<double> parseDecimal(std::string_view text);

}  // namespace lumora::lx
