#pragma once

namespace lumora {

struct GeoLocation {
    double latitude = 0;   // degrees, north positive
    double longitude = 0;  // degrees, east positive

    friend bool operator==(const GeoLocation&, const GeoLocation&) = default;
};

// The sun's geometric elevation above the horizon in degrees (no refraction) at a moment
// given as seconds since 1970-01-01T00:00:00Z, from the low-precision almanac formulas:
// within about 0.05° of the published ephemerides for this century.
[[nodiscard]] double solarElevation(double utcSeconds, const GeoLocation& place);

// How far the day has come, 0 (night, the sun 6° or more below the horizon) … 1 (day, 6° or
// more above it), smooth in between so the twilight carries the change.
[[nodiscard]] double daylight(double elevation);

// Per-channel gains (each 0…1, the strongest 1) that make white look like a black body of
// `kelvin` (1000…40000); 6500 K gives nearly 1, 1, 1.
struct ChannelGains {
    double red = 1;
    double green = 1;
    double blue = 1;

    friend bool operator==(const ChannelGains&, const ChannelGains&) = default;
};
[[nodiscard]] ChannelGains colorTemperatureGains(double kelvin);
// `a` at 0, `b` at 1.
[[nodiscard]] ChannelGains blend(const ChannelGains& a, const ChannelGains& b, double t);

}  // namespace lumora
