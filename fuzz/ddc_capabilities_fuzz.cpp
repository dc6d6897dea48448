// A capabilities string is text from a monitor's firmware, fragment by fragment: any bytes
// must parse or be refused, and what parses names only two-digit codes.
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "base/Check.h"
#include "ddc/DdcCapabilities.h"
#include "ddc/DdcPacket.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (auto caps = lumora::parseCapabilities(text)) {
        lumora::check(text.find("vcp(") != std::string_view::npos, "codes without a vcp list");
        for (const auto& [code, values] : caps->vcp)
            lumora::check(values.size() <= size, "more values than bytes");
    }
    const std::uint16_t offset = size >= 2 ? static_cast<std::uint16_t>(data[0] << 8 | data[1]) : 0;
    const auto fragment = lumora::checkCapabilitiesFragment(std::span(data, size), offset);
    if (fragment.data) {
        lumora::check(fragment.data->size() <= lumora::kCapabilitiesFragmentMax,
                      "a fragment longer than any reply holds");
    }
    return 0;
}
