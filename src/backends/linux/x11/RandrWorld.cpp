#include "x11/RandrWorld.h"

#include <algorithm>

namespace lumora::lx {

namespace {

constexpr std::uint64_t kInterlace = 0x10;   // RR_Interlace
constexpr std::uint64_t kDoubleScan = 0x20;  // RR_DoubleScan

template <class T>
const T* findById(const std::vector<T>& items, XId id) {
    auto found = std::find_if(items.begin(), items.end(), [id](const T& t) { return t.id == id; });
    return found == items.end() ? nullptr : &*found;
}

}  // namespace

const ModeTiming* RandrWorld::mode(XId id) const {
    return findById(modes, id);
}
const CrtcState* RandrWorld::crtc(XId id) const {
    return findById(crtcs, id);
}
const OutputState* RandrWorld::output(XId id) const {
    return findById(outputs, id);
}

double refreshRate(const ModeTiming& mode) {
    if (mode.dotClock == 0 || mode.hTotal == 0 || mode.vTotal == 0) return 0;
    double rate = static_cast<double>(mode.dotClock) /
                  (static_cast<double>(mode.hTotal) * static_cast<double>(mode.vTotal));
    if (mode.flags & kInterlace) rate *= 2;
    if (mode.flags & kDoubleScan) rate /= 2;
    return rate;
}

std::pair<std::uint32_t, std::uint32_t> rotatedSize(std::uint32_t width, std::uint32_t height,
                                                    std::uint16_t rotation) {
    if (rotation & (kRotate90 | kRotate270)) return {height, width};
    return {width, height};
}

double rotationDegrees(std::uint16_t rotation) {
    switch (rotation & kRotationBits) {
        case kRotate90:
            return 270;
        case kRotate180:
            return 180;
        case kRotate270:
            return 90;
        default:
            return 0;
    }
}

}  // namespace lumora::lx
