// Number text reaches the program in command URLs and leaves it in log lines: any bytes must
// parse to a number or to nothing, and every finite number, whether parsed or taken bit for
// bit from the input, must be written in a form that reads back as exactly that number.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/Check.h"
#include "base/NumberText.h"

namespace {

void checkRoundTrip(double value) {
    if (!std::isfinite(value)) return;
    lumora::check(lumora::parseDecimal(lumora::shortestText(value)) == value,
                  "a number's shortest text does not read back as the number");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (auto value = lumora::parseDecimal(text)) checkRoundTrip(*value);
    if (size >= sizeof(double)) {
        double bits = 0;
        std::memcpy(&bits, data, sizeof bits);
        checkRoundTrip(bits);
    }
    return 0;
}
