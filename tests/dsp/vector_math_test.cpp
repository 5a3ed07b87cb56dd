#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/vector_checks.h"
#include "dsp/vector_primitives.h"

namespace {

using namespace vector_checks;

constexpr double half_a_step = 6.5e-8; // of a float's 24 bits, and a little for the polynomials

std::vector<float> spread(float low, float high, int n = 4000) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> distribution(low, high);
    std::vector<float> values(static_cast<std::size_t>(n));
    for (float& value : values)
        value = distribution(random);
    return values;
}

/// Compares with double precision; what a float can't hold as a normal number is left to the special values.
void expect_relative(float got, double want, double tolerance, const char* what, float argument) {
    if (std::fabs(want) < double{std::numeric_limits<float>::min()} ||
        std::fabs(want) > double{std::numeric_limits<float>::max()})
        return;
    EXPECT_LE(std::fabs(got - want), tolerance * std::fabs(want))
        << what << " of " << argument << " gave " << got;
}

TEST(VectorMath, TanhIsOddWithinOneAndGoodToSixDigits) {
    for (const float limit : {1.0e-30F, 1.0e-3F, 0.5F, 9.5F, 1.0e4F})
        for (const float a : spread(0.0F, limit)) {
            const std::vector<float> both = {a, -a};
            std::vector<float> d(2);
            qnl_tanh(both.data(), d.data(), 2);
            EXPECT_EQ(d[0], -d[1]);
            EXPECT_LE(std::fabs(d[0]), 1.0F);
            expect_relative(d[0], std::tanh(double{a}), 5.0e-7, "tanh", a);
        }
}

TEST(VectorMath, LogarithmIsGoodToSixDigitsAroundOneToo) {
    for (const auto& [low, high] :
         {std::pair{1.0e-38F, 1.0e-30F}, {1.0e-3F, 0.1F}, {0.99F, 1.01F}, {0.5F, 2.0F}, {1.0F, 3.0e38F}})
        for (const float a : spread(low, high)) {
            float d = 0.0F;
            qnl_log10(&a, &d, 1);
            expect_relative(d, std::log10(double{a}), 4.0e-7, "log10", a);
        }
}

TEST(VectorMath, PowerPhaseAndCartesianAreGoodToSinglePrecision) {
    const std::vector<float> base = spread(0.01F, 40.0F);
    const std::vector<float> exponent = spread(-25.0F, 25.0F);
    for (std::size_t i = 0; i < base.size(); ++i) {
        float d = 0.0F;
        qnl_pow(&base[i], &exponent[i], &d, 1);
        expect_relative(d, std::pow(double{base[i]}, double{exponent[i]}), half_a_step, "pow", base[i]);
        const float im = i % 2 == 0 ? base[i] - 20.0F : base[base.size() - 1 - i] * exponent[i] * 1.0e-3F;
        const complex32f value = {exponent[i], im};
        qnl_phase(&value, &d, 1);
        expect_relative(d, std::atan2(double{im}, double{value.re}), half_a_step, "phase", value.re);
        // Angles of every size; the C library reduces a double exactly, and every float is one.
        const float angle = std::ldexp(1.0F + base[i] / 64.0F, static_cast<int>(i % 140) - 12);
        const float one = 1.0F;
        complex32f unit = {};
        qnl_polar_to_cart(&one, &angle, &unit, 1);
        EXPECT_NEAR(unit.re, std::cos(double{angle}), 1.0e-7) << angle;
        EXPECT_NEAR(unit.im, std::sin(double{angle}), 1.0e-7) << angle;
    }
}

/// The same value, or the nearest but one: what special values lead to is exact or single precision.
void expect_like_library(float got, float want, const char* what, float a, float b) {
    EXPECT_EQ(std::isnan(got), std::isnan(want)) << what << " of " << a << ", " << b << " gave " << got;
    if (std::isnan(want))
        return;
    EXPECT_FLOAT_EQ(got, want) << what << " of " << a << ", " << b;
    EXPECT_EQ(std::signbit(got), std::signbit(want)) << what << " of " << a << ", " << b;
}

// On the scalar target, whose bits the others repeat.
TEST(VectorMath, SpecialValuesGoTheWayOfTheCLibrary) {
    for (const float a : turning_points()) {
        float d = 0.0F;
        qnl_tanh(&a, &d, 1);
        expect_like_library(d, std::tanh(a), "tanh", a, 0.0F);
        qnl_log10(&a, &d, 1);
        expect_like_library(d, std::log10(a), "log10", a, 0.0F);
        for (const float b : turning_points()) {
            qnl_pow(&a, &b, &d, 1);
            expect_like_library(d, std::pow(a, b), "pow", a, b);
            const complex32f value = {a, b};
            qnl_phase(&value, &d, 1);
            expect_like_library(d, std::atan2(b, a), "phase", a, b);
            complex32f polar = {};
            qnl_polar_to_cart(&a, &b, &polar, 1);
            expect_like_library(polar.re, static_cast<float>(double{a} * std::cos(double{b})), "re", a, b);
            expect_like_library(polar.im, static_cast<float>(double{a} * std::sin(double{b})), "im", a, b);
        }
    }
    const float ten = 10.0F;
    const float zero = 0.0F;
    float one = 0.0F;
    qnl_pow(&ten, &zero, &one, 1);
    EXPECT_EQ(one, 1.0F);
}

} // namespace
