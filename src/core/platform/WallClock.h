#pragma once

namespace lumora {

// The civil time of day, which only the sun schedule needs; everything else runs on the
// scheduler's monotonic uptime. Main thread.
class WallClock {
  public:
    virtual ~WallClock() = default;
    // Seconds since 1970-01-01T00:00:00Z (UTC, no leap seconds).
    [[nodiscard]] virtual double utcSeconds() const = 0;
};

}  // namespace lumora
