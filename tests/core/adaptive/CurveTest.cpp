#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "adaptive/AdaptiveCurve.h"

namespace lumora {

void PrintTo(const CurvePoint& p, std::ostream* out) {
    *out << "{" << p.input << ", " << p.level << (p.learned ? ", learned}" : "}");
}

namespace {

AdaptiveCurve identity() {
    return {CurveScale::linear, 0.1, {{0, 0}, {1, 1}}};
}

TEST(AdaptiveCurve, CorrectionsArePassedThroughAndInterpolated) {
    AdaptiveCurve curve = identity();
    curve.correct(0.5, 0.3);
    EXPECT_DOUBLE_EQ(curve.at(0.5), 0.3);
    EXPECT_DOUBLE_EQ(curve.at(0.25), 0.15);
    EXPECT_DOUBLE_EQ(curve.at(0.75), 0.65);
    EXPECT_DOUBLE_EQ(curve.at(-3), 0.0);  // flat beyond the ends
    EXPECT_DOUBLE_EQ(curve.at(7), 1.0);

    // A second correction nearby replaces the first.
    curve.correct(0.55, 0.4);
    EXPECT_EQ(curve.points(), (std::vector<CurvePoint>{{0, 0}, {0.55, 0.4, true}, {1, 1}}));
}

TEST(AdaptiveCurve, LuxInterpolatesOnALogScaleAndStartingBendsBetweenCorrectionsGo) {
    AdaptiveCurve curve{CurveScale::logarithmic,
                        0.2,
                        {{0, 0.10}, {10, 0.25}, {100, 0.45}, {1000, 0.75}, {10000, 1.0}}};
    curve.correct(20, 0.2);
    curve.correct(300, 0.6);
    EXPECT_DOUBLE_EQ(curve.at(20), 0.2);
    EXPECT_DOUBLE_EQ(curve.at(300), 0.6);
    // The 100-lux starting point lay between the two: the user's line replaces it. The
    // 10-lux one is pulled down so the curve never falls.
    const double t = (std::log10(78.0) - std::log10(21.0)) / (std::log10(301.0) - std::log10(21.0));
    EXPECT_NEAR(curve.at(77), 0.2 + 0.4 * t, 1e-12);
    EXPECT_EQ(
        curve.points(),
        (std::vector<CurvePoint>{
            {0, 0.10}, {10, 0.2}, {20, 0.2, true}, {300, 0.6, true}, {1000, 0.75}, {10000, 1.0}}));
}

TEST(AdaptiveCurve, StaysMonotoneAndSmallAfterAnySequenceOfCorrections) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> input(-0.2, 1.2);
    std::uniform_real_distribution<double> level(-0.1, 1.1);
    AdaptiveCurve curve = identity();
    for (int i = 0; i < 500; ++i) {
        const double x = input(random);
        const double y = level(random);
        curve.correct(x, y);
        const auto& p = curve.points();
        ASSERT_LE(p.size(), AdaptiveCurve::kMostPoints);
        for (std::size_t k = 1; k < p.size(); ++k) {
            ASSERT_LT(p[k - 1].input, p[k].input) << "after correction " << i;
            ASSERT_LE(p[k - 1].level, p[k].level) << "after correction " << i;
        }
        ASSERT_DOUBLE_EQ(curve.at(x), std::clamp(y, 0.0, 1.0)) << "after correction " << i;
    }
}

TEST(AdaptiveCurve, StoredPointsAreCheckedAndRepaired) {
    for (const char* bad : {R"(null)", R"([])", R"([[0, 1]])", R"([[0, "1", 0]])", R"({"0": 1})",
                            R"([[0, 1, 0], 5])"}) {
        EXPECT_FALSE(AdaptiveCurve::pointsFromJson(nlohmann::json::parse(bad))) << bad;
    }
    const auto points =
        AdaptiveCurve::pointsFromJson(nlohmann::json::parse("[[1, 0.2, 0], [0, 1.7, 1]]"));
    ASSERT_TRUE(points);
    // Sorted, clamped and made non-decreasing.
    const AdaptiveCurve curve{CurveScale::linear, 0.1, *points};
    EXPECT_EQ(curve.points(), (std::vector<CurvePoint>{{0, 1, true}, {1, 1}}));
}

}  // namespace
}  // namespace lumora
