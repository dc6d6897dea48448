// Arbitrary bytes as a stored "lidConfig": decoding never crashes, and whatever decodes
// survives its own encoding unchanged.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "lid/LidConfig.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    auto config = lumora::LidConfig::fromJsonText(text);
    if (!config) return 0;
    if (lumora::LidConfig::fromJsonText(config->toJsonText()) != config) __builtin_trap();
    (void)config->describe();
    return 0;
}
