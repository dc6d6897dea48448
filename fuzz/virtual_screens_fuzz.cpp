// Arbitrary bytes as the stored "virtualScreens" data: decoding never crashes, and whatever
// decodes survives its own encoding unchanged.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "virtual/VirtualScreenConfig.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    auto configs = lumora::VirtualScreenConfig::listFromJsonText(text);
    if (!configs) return 0;
    const auto encoded = lumora::VirtualScreenConfig::listToJson(*configs).dump();
    if (lumora::VirtualScreenConfig::listFromJsonText(encoded) != configs) __builtin_trap();
    return 0;
}
