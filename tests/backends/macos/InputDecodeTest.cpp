// Tapped key events and HID lid values, decoded from recorded event fields.
#include <gtest/gtest.h>

#include "decode/BrightnessKeyDecoder.h"
#include "decode/LidValue.h"

namespace lumora::mac {
namespace {

using Kind = BrightnessKeyEvent::Kind;

constexpr std::int64_t kUp = 2, kDown = 3, kVolumeUp = 0, kMute = 7;
constexpr std::int64_t kPressed = 0x0A, kReleased = 0x0B;
constexpr std::uint64_t kShift = 0x20000, kOption = 0x80000, kCommand = 0x100000;

std::int64_t data1(std::int64_t code, std::int64_t state) {
    return (code << 16) | (state << 8);
}

std::optional<BrightnessKeyEvent> decode(std::int64_t d1, std::uint64_t flags = 0,
                                         std::int16_t subtype = kAuxControlButtonsSubtype,
                                         std::uint32_t type = kSystemDefinedEventType) {
    return decodeTappedEvent({type, subtype, d1, flags});
}

BrightnessKeyEvent key(bool up, bool pressed, bool fine = false) {
    return {Kind::key, up, pressed, fine};
}

TEST(BrightnessKeyDecoding, OnlyCodesTwoAndThreeOfSubtypeEight) {
    EXPECT_EQ(decode(data1(kUp, kPressed)), key(true, true));
    EXPECT_EQ(decode(data1(kDown, kReleased)), key(false, false));
    EXPECT_EQ(decode(data1(kDown, kPressed) | 1), key(false, true));  // auto-repeat
    EXPECT_EQ(decode(data1(kUp, 0x00)), key(true, false));
    EXPECT_EQ(decode(data1(kUp, kPressed), kOption | kShift), key(true, true, true));
    EXPECT_EQ(decode(data1(kUp, kPressed), kOption | kShift | kCommand), key(true, true, true));
    EXPECT_EQ(decode(data1(kUp, kPressed), kOption), key(true, true));
    EXPECT_EQ(decode(data1(kUp, kPressed), kShift), key(true, true));
    for (std::int64_t code :
         {kVolumeUp, std::int64_t{1}, kMute, std::int64_t{16}, std::int64_t{0x102}}) {
        EXPECT_EQ(decode(data1(code, kPressed)), std::nullopt) << code;
    }
    EXPECT_EQ(decode(data1(kUp, kPressed) | (std::int64_t{1} << 32)), std::nullopt);
    EXPECT_EQ(decode(-data1(kUp, kPressed)), std::nullopt);
    EXPECT_EQ(decode(data1(kUp, kPressed), 0, 7), std::nullopt);
    EXPECT_EQ(decode(data1(kUp, kPressed), 0, 8, 10), std::nullopt);  // a key-down event
}

TEST(BrightnessKeyDecoding, TapSwitchedOffByTheSystem) {
    const BrightnessKeyEvent off{.kind = Kind::tapDisabled};
    EXPECT_EQ(decode(0, 0, 0, kTapDisabledByTimeout), off);
    EXPECT_EQ(decode(0, 0, 0, kTapDisabledByUserInput), off);
}

TEST(LidValue, OnlyTheAngleElementWithAPlausibleValue) {
    const struct {
        std::uint32_t page, usage;
        std::int64_t value;
        std::optional<std::int64_t> angle;
    } cases[] = {
        {0x20, 0x47F, 110, 110}, {0x20, 0x47F, 0, 0},      {0x20, 0x47F, 360, 360},
        {0x20, 0x47F, -1, {}},   {0x20, 0x47F, 65535, {}}, {0x20, 0x8A, 110, {}},
        {0x01, 0x47F, 110, {}},  {0x20, 0x47E, 110, {}},
    };
    for (const auto& c : cases) {
        const auto reading = decodeLidValue(c.page, c.usage, c.value);
        if (c.angle) {
            EXPECT_EQ(reading, (LidReading{c.angle, std::nullopt})) << c.value;
        } else {
            EXPECT_EQ(reading, std::nullopt) << c.page << " " << c.usage << " " << c.value;
        }
    }
}

}  // namespace
}  // namespace lumora::mac
