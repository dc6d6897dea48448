#include "adaptive/Sun.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace lumora {

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;
constexpr double kSecondsPerDay = 86400.0;
constexpr double kUnixEpochJulianDay = 2440587.5;
constexpr double kJ2000 = 2451545.0;
constexpr double kTwilight = 6.0;

double degreesIn360(double degrees) {
    const double r = std::fmod(degrees, 360.0);
    return r < 0 ? r + 360.0 : r;
}

// A black body's colour by the usual fit to the CIE tables, in 0…255 per channel.
ChannelGains blackBody(double kelvin) {
    const double t = std::clamp(kelvin, 1000.0, 40000.0) / 100.0;
    ChannelGains c;
    c.red = t <= 66 ? 255.0 : 329.698727446 * std::pow(t - 60, -0.1332047592);
    c.green = t <= 66 ? 99.4708025861 * std::log(t) - 161.1195681661
                      : 288.1221695283 * std::pow(t - 60, -0.0755148492);
    if (t >= 66) {
        c.blue = 255.0;
    } else if (t <= 19) {
        c.blue = 0.0;
    } else {
        c.blue = 138.5177312231 * std::log(t - 10) - 305.0447927307;
    }
    return c;
}

}  // namespace

double solarElevation(double utcSeconds, const GeoLocation& place) {
    const double n = utcSeconds / kSecondsPerDay + kUnixEpochJulianDay - kJ2000;
    const double meanLongitude = degreesIn360(280.460 + 0.9856474 * n);
    const double meanAnomaly = degreesIn360(357.528 + 0.9856003 * n) * kDegree;
    const double eclipticLongitude =
        (meanLongitude + 1.915 * std::sin(meanAnomaly) + 0.020 * std::sin(2 * meanAnomaly)) *
        kDegree;
    const double obliquity = (23.439 - 0.0000004 * n) * kDegree;
    const double rightAscension =
        std::atan2(std::cos(obliquity) * std::sin(eclipticLongitude), std::cos(eclipticLongitude));
    const double declination = std::asin(std::sin(obliquity) * std::sin(eclipticLongitude));
    const double siderealHours = 18.697374558 + 24.06570982441908 * n;
    const double hourAngle =
        degreesIn360(siderealHours * 15.0 + place.longitude) * kDegree - rightAscension;
    const double latitude = place.latitude * kDegree;
    const double sine = std::sin(latitude) * std::sin(declination) +
                        std::cos(latitude) * std::cos(declination) * std::cos(hourAngle);
    return std::asin(std::clamp(sine, -1.0, 1.0)) / kDegree;
}

double daylight(double elevation) {
    if (std::isnan(elevation)) return 1.0;
    const double t = std::clamp((elevation + kTwilight) / (2 * kTwilight), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

ChannelGains colorTemperatureGains(double kelvin) {
    if (!std::isfinite(kelvin)) return {};
    const ChannelGains c = blackBody(kelvin);
    const double strongest = std::max({c.red, c.green, c.blue});
    if (strongest <= 0) return {};
    return {std::clamp(c.red / strongest, 0.0, 1.0), std::clamp(c.green / strongest, 0.0, 1.0),
            std::clamp(c.blue / strongest, 0.0, 1.0)};
}

ChannelGains blend(const ChannelGains& a, const ChannelGains& b, double t) {
    t = std::clamp(t, 0.0, 1.0);
    return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t,
            a.blue + (b.blue - a.blue) * t};
}

}  // namespace lumora
