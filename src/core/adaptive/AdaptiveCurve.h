#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include <nlohmann/json.hpp>

namespace lumora {

// How a curve's inputs are spaced: lux spans five decades, so it interpolates in log10.
enum class CurveScale { linear, logarithmic };

struct CurvePoint {
    double input = 0;
    double level = 0;      // brightness 0…1
    bool learned = false;  // a correction the user made, not part of the starting curve

    friend bool operator==(const CurvePoint&, const CurvePoint&) = default;
};

// [[input, level, learned 0|1], ...]
[[nodiscard]] nlohmann::json curvePointsJson(const std::vector<CurvePoint>& points);

// One display's answer to an input (built-in brightness, lux, sun elevation): a
// non-decreasing piecewise-linear curve through a few points, flat beyond its ends.
class AdaptiveCurve {
  public:
    static constexpr std::size_t kMostPoints = 8;

    // `nearby`: a correction replaces the points closer than this to it, in scaled units.
    // The points are sorted and made non-decreasing; none at all gives a flat 0.5.
    AdaptiveCurve(CurveScale scale, double nearby, std::vector<CurvePoint> points);

    [[nodiscard]] double at(double input) const;
    // The user chose `level` at `input`: the curve passes through it from now on. Points
    // nearby and starting points between it and the next corrections go; the rest are pulled
    // so the curve stays non-decreasing.
    void correct(double input, double level);
    [[nodiscard]] const std::vector<CurvePoint>& points() const { return points_; }

    // Nothing unless an array of curvePointsJson's triples with finite numbers (levels are
    // clamped).
    [[nodiscard]] static std::optional<std::vector<CurvePoint>> pointsFromJson(
        const nlohmann::json& json);

  private:
    [[nodiscard]] double position(double input) const;
    void makeMonotone(std::size_t pinned);
    // Returns where `keep` is afterwards.
    std::size_t dropOnePoint(std::size_t keep);

    CurveScale scale_;
    double nearby_;
    std::vector<CurvePoint> points_;
};

}  // namespace lumora
