// Monitor replies and EDID blocks are bytes from hardware: any of them must parse or be
// refused without reading past the buffer.
#include <cstddef>
#include <cstdint>
#include <span>

#include "base/Check.h"
#include "ddc/DdcPacket.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> bytes(data, size);
    // The first byte picks the code asked for, so replies for the right code get explored.
    const std::uint8_t code = size > 0 ? data[0] : 0;
    const auto rest = size > 0 ? bytes.subspan(1) : bytes;
    if (auto reading = lumora::parseVcpReply(rest, code)) {
        lumora::check(rest.size() >= lumora::kVcpReplySize && rest[4] == code,
                      "accepted a reply that is short or for another code");
    }
    if (auto ids = lumora::parseEdidIds(bytes)) {
        lumora::check(size >= 16 && data[0] == 0x00 && data[1] == 0xFF,
                      "accepted an EDID without its header");
    }
    return 0;
}
