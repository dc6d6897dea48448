#include "adaptive/AdaptiveCurve.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace lumora {

namespace {

constexpr double kFlatLevel = 0.5;

double clampLevel(double level) {
    return std::clamp(level, 0.0, 1.0);
}

}  // namespace

AdaptiveCurve::AdaptiveCurve(CurveScale scale, double nearby, std::vector<CurvePoint> points)
    : scale_(scale), nearby_(nearby), points_(std::move(points)) {
    std::erase_if(points_, [](const CurvePoint& p) {
        return !std::isfinite(p.input) || !std::isfinite(p.level);
    });
    std::stable_sort(points_.begin(), points_.end(),
                     [](const CurvePoint& a, const CurvePoint& b) { return a.input < b.input; });
    // Two points at one input would make the curve jump; the later one stands.
    for (std::size_t i = 1; i < points_.size();) {
        if (points_[i].input == points_[i - 1].input) {
            points_.erase(points_.begin() + static_cast<std::ptrdiff_t>(i - 1));
        } else {
            ++i;
        }
    }
    double running = 0;
    for (CurvePoint& p : points_) {
        p.level = std::max(clampLevel(p.level), running);
        running = p.level;
    }
    while (points_.size() > kMostPoints)
        dropOnePoint(points_.size());  // no point to keep
}

double AdaptiveCurve::position(double input) const {
    if (scale_ == CurveScale::linear) return input;
    return std::log10(std::max(input, 0.0) + 1.0);
}

double AdaptiveCurve::at(double input) const {
    if (points_.empty()) return kFlatLevel;
    if (std::isnan(input)) return points_.front().level;
    if (input <= points_.front().input) return points_.front().level;
    if (input >= points_.back().input) return points_.back().level;
    const auto upper = std::upper_bound(points_.begin(), points_.end(), input,
                                        [](double x, const CurvePoint& p) { return x < p.input; });
    const CurvePoint& b = *upper;
    const CurvePoint& a = *(upper - 1);
    const double span = position(b.input) - position(a.input);
    const double t = span > 0 ? (position(input) - position(a.input)) / span : 1.0;
    return a.level + (b.level - a.level) * t;
}

void AdaptiveCurve::correct(double input, double level) {
    if (!std::isfinite(input) || !std::isfinite(level)) return;
    level = clampLevel(level);
    const double here = position(input);
    std::erase_if(
        points_, [&](const CurvePoint& p) { return std::abs(position(p.input) - here) < nearby_; });
    // The user's corrections bound what the starting curve still says: between two of them
    // the curve is the straight line the user drew, not the default's bends.
    double leftLearned = -std::numeric_limits<double>::infinity();
    double rightLearned = std::numeric_limits<double>::infinity();
    for (const CurvePoint& p : points_) {
        if (!p.learned) continue;
        if (p.input < input) leftLearned = std::max(leftLearned, p.input);
        if (p.input > input) rightLearned = std::min(rightLearned, p.input);
    }
    std::erase_if(points_, [&](const CurvePoint& p) {
        if (p.learned) return false;
        const bool betweenLeft = std::isfinite(leftLearned) && p.input > leftLearned;
        const bool betweenRight = std::isfinite(rightLearned) && p.input < rightLearned;
        return (betweenLeft && p.input < input) || (betweenRight && p.input > input);
    });
    const auto at = std::lower_bound(points_.begin(), points_.end(), input,
                                     [](const CurvePoint& p, double x) { return p.input < x; });
    const auto index = static_cast<std::size_t>(at - points_.begin());
    points_.insert(at, CurvePoint{input, level, true});
    makeMonotone(index);
    std::size_t kept = index;
    while (points_.size() > kMostPoints)
        kept = dropOnePoint(kept);
}

void AdaptiveCurve::makeMonotone(std::size_t pinned) {
    const double level = points_[pinned].level;
    for (std::size_t i = 0; i < pinned; ++i)
        points_[i].level = std::min(points_[i].level, level);
    for (std::size_t i = pinned + 1; i < points_.size(); ++i)
        points_[i].level = std::max(points_[i].level, level);
}

// Drops the inner point whose loss bends the curve least, never `keep`.
std::size_t AdaptiveCurve::dropOnePoint(std::size_t keep) {
    std::size_t best = points_.size();
    double bestError = std::numeric_limits<double>::infinity();
    for (std::size_t i = 1; i + 1 < points_.size(); ++i) {
        if (i == keep) continue;
        const CurvePoint& a = points_[i - 1];
        const CurvePoint& b = points_[i + 1];
        const double span = position(b.input) - position(a.input);
        const double t = span > 0 ? (position(points_[i].input) - position(a.input)) / span : 0;
        const double error = std::abs(a.level + (b.level - a.level) * t - points_[i].level);
        if (error < bestError) {
            bestError = error;
            best = i;
        }
    }
    if (best == points_.size()) best = keep == 0 ? points_.size() - 1 : 0;
    points_.erase(points_.begin() + static_cast<std::ptrdiff_t>(best));
    return best < keep ? keep - 1 : keep;
}

nlohmann::json curvePointsJson(const std::vector<CurvePoint>& points) {
    nlohmann::json list = nlohmann::json::array();
    for (const CurvePoint& p : points)
        list.push_back({p.input, p.level, p.learned ? 1 : 0});
    return list;
}

std::optional<std::vector<CurvePoint>> AdaptiveCurve::pointsFromJson(const nlohmann::json& json) {
    if (!json.is_array() || json.empty()) return std::nullopt;
    std::vector<CurvePoint> points;
    for (const auto& item : json) {
        if (!item.is_array() || item.size() != 3) return std::nullopt;
        for (const auto& number : item) {
            if (!number.is_number() || !std::isfinite(number.get<double>())) return std::nullopt;
        }
        points.push_back(
            {item[0].get<double>(), clampLevel(item[1].get<double>()), item[2].get<double>() != 0});
    }
    return points;
}

}  // namespace lumora
