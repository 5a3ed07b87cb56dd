#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/flush_to_zero.h"
#include "dsp/vector_operations.h"
#include "dsp/vector_primitives.h"

namespace {

using namespace vector_checks;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();

/// An operation that has to do what it does on the scalar target.
operation as_scalar(const char* name, int a_width, int b_width, int x_width, operation_body run) {
    return {name, a_width, b_width, x_width, run, [=](const float* a, const float* b, float* x, int n) {
                const int target = active_vector_target();
                select_vector_target(0);
                run(a, b, x, n);
                select_vector_target(target);
            }};
}

std::vector<operation> mathematical_operations() {
    using body = const float*;
    return {
        as_scalar("tanh", 1, 0, 1, [](body a, body, float* x, int n) { qnl_tanh(a, x, n); }),
        as_scalar("log10", 1, 0, 1, [](body a, body, float* x, int n) { qnl_log10(a, x, n); }),
        as_scalar("log10_I", 0, 0, 1, [](body, body, float* x, int n) { qnl_log10_I(x, n); }),
        as_scalar("pow", 1, 1, 1, [](body a, body b, float* x, int n) { qnl_pow(a, b, x, n); }),
        as_scalar("phase", 2, 0, 1,
                  [](body a, body, float* x, int n) { qnl_phase(as<complex32f>(a), x, n); }),
        as_scalar("polar_to_cart", 1, 1, 2,
                  [](body a, body b, float* x, int n) { qnl_polar_to_cart(a, b, as<complex32f>(x), n); }),
        as_scalar("hann_window_I", 0, 0, 1, [](body, body, float* x, int n) { qnl_hann_window_I(x, n); }),
        as_scalar("complex mag_dB", 2, 0, 1,
                  [](body a, body, float* x, int n) { qnl_mag_dB(as<complex32f>(a), x, n); }),
        as_scalar("mag_dB", 1, 0, 1, [](body a, body, float* x, int n) { qnl_mag_dB(a, x, n); }),
        as_scalar("linear_to_dB", 1, 0, 1, [](body a, body, float* x, int n) { qnl_linear_to_dB(a, x, n); }),
        as_scalar("linear_to_power_dB_I", 0, 0, 1,
                  [](body, body, float* x, int n) { qnl_linear_to_power_dB_I(x, n); }),
        as_scalar("power_spectrum_dB", 2, 0, 1,
                  [](body a, body, float* x, int n) { qnl_power_spectrum_dB(as<complex32f>(a), x, n); }),
        as_scalar("mean", 1, 0, 1,
                  [](body a, body, float* x, int n) {
                      if (n > 0)
                          x[0] = qnl_mean(a, n);
                  }),
        as_scalar("max", 1, 0, 1,
                  [](body a, body, float* x, int n) {
                      if (n > 0)
                          x[0] = qnl_max(a, n);
                  }),
        as_scalar("min", 1, 0, 1,
                  [](body a, body, float* x, int n) {
                      if (n > 0)
                          x[0] = qnl_min(a, n);
                  }),
    };
}

TEST(VectorMath, EveryTargetRepeatsTheBitsOfTheScalarOne) {
    sweep(mathematical_operations(), destination::apart);
    sweep(mathematical_operations(), destination::first_source);
}

TEST(VectorMath, EveryTargetRepeatsTheBitsOfTheScalarOneWhileDenormalsAreFlushed) {
    const flush_to_zero guard;
    sweep(mathematical_operations(), destination::apart);
}

TEST(VectorMath, LargeAnglesTakeTheSameRoadOnEveryTarget) {
    constexpr int n = 4000;
    std::mt19937 random(7);
    std::vector<float> angle(n);
    for (float& value : angle)
        value = std::ldexp(1.0F + static_cast<float>(random() % 8388608) / 8388608.0F,
                           static_cast<int>(random() % 140) - 12);
    const std::vector<float> mag(n, 1.0F);
    std::vector<complex32f> result(n);
    on_every_target([&](const char* target) {
        qnl_polar_to_cart(mag.data(), angle.data(), result.data(), n);
        for (std::size_t i = 0; i < n; ++i) {
            // The C library reduces a double exactly, and every float is one. Two roundings make 1e-7.
            EXPECT_NEAR(result[i].re, std::cos(double{angle[i]}), 1.0e-7) << target << ", angle " << angle[i];
            EXPECT_NEAR(result[i].im, std::sin(double{angle[i]}), 1.0e-7) << target << ", angle " << angle[i];
        }
    });
}

std::vector<float> spread(float low, float high, int n) {
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

TEST(VectorMath, TanhAndLogarithmAreGoodToSixDigitsAndMore) {
    for (const float limit : {1.0e-30F, 1.0e-3F, 0.5F, 9.5F, 1.0e4F}) {
        const std::vector<float> a = spread(-limit, limit, 2000);
        std::vector<float> d(a.size());
        qnl_tanh(a.data(), d.data(), 2000);
        for (std::size_t i = 0; i < a.size(); ++i)
            expect_relative(d[i], std::tanh(double{a[i]}), 5.0e-7, "tanh", a[i]);
        for (std::size_t i = 0; i < a.size(); ++i)
            EXPECT_LE(std::fabs(d[i]), 1.0F);
    }
    for (const auto& [low, high] :
         {std::pair{1.0e-38F, 1.0e-30F}, {1.0e-3F, 0.1F}, {0.99F, 1.01F}, {0.5F, 2.0F}, {1.0F, 3.0e38F}}) {
        const std::vector<float> a = spread(low, high, 2000);
        std::vector<float> d(a.size());
        qnl_log10(a.data(), d.data(), 2000);
        for (std::size_t i = 0; i < a.size(); ++i)
            expect_relative(d[i], std::log10(double{a[i]}), 4.0e-7, "log10", a[i]);
    }
}

TEST(VectorMath, PowerAndPhaseAreGoodToSinglePrecision) {
    constexpr double half_a_step = 6.5e-8; // of a float's 24 bits, and a little for the polynomials
    const std::vector<float> base = spread(0.01F, 40.0F, 4000);
    const std::vector<float> exponent = spread(-25.0F, 25.0F, 4000);
    std::vector<complex32f> z(base.size());
    for (std::size_t i = 0; i < z.size(); ++i)
        z[i] = {exponent[i], i % 2 == 0 ? base[i] - 20.0F : base[z.size() - 1 - i] * exponent[i] * 1.0e-3F};
    std::vector<float> d(base.size());
    qnl_pow(base.data(), exponent.data(), d.data(), 4000);
    for (std::size_t i = 0; i < d.size(); ++i)
        expect_relative(d[i], std::pow(double{base[i]}, double{exponent[i]}), half_a_step, "pow", base[i]);
    qnl_phase(z.data(), d.data(), 4000);
    for (std::size_t i = 0; i < d.size(); ++i)
        expect_relative(d[i], std::atan2(double{z[i].im}, double{z[i].re}), half_a_step, "phase", z[i].re);
}

const std::vector<float>& special_values() {
    using limits = std::numeric_limits<float>;
    static const std::vector<float> values = {0.0F,
                                              -0.0F,
                                              1.0F,
                                              -1.0F,
                                              0.5F,
                                              -0.5F,
                                              2.0F,
                                              -2.0F,
                                              3.0F,
                                              -3.0F,
                                              2.5F,
                                              -2.5F,
                                              16777215.0F,
                                              -16777215.0F,
                                              16777216.0F,
                                              -16777216.0F,
                                              8388607.5F,
                                              -8388607.5F,
                                              limits::max(),
                                              limits::lowest(),
                                              limits::min(),
                                              -limits::min(),
                                              limits::denorm_min(),
                                              -limits::denorm_min(),
                                              infinity,
                                              -infinity,
                                              not_a_number};
    return values;
}

/// The same value, or the nearest but one: what special values lead to is exact or single precision.
void expect_like_library(float got, float want, const char* what, float a, float b) {
    if (std::isnan(want)) {
        EXPECT_TRUE(std::isnan(got)) << what << " of " << a << ", " << b << " gave " << got;
        return;
    }
    EXPECT_FLOAT_EQ(got, want) << what << " of " << a << ", " << b;
    EXPECT_EQ(std::signbit(got), std::signbit(want)) << what << " of " << a << ", " << b;
}

TEST(VectorMath, SpecialValuesGoTheWayOfTheCLibrary) {
    on_every_target([](const char*) {
        for (const float a : special_values()) {
            float d = 0.0F;
            qnl_tanh(&a, &d, 1);
            expect_like_library(d, std::tanh(a), "tanh", a, 0.0F);
            qnl_log10(&a, &d, 1);
            expect_like_library(d, std::log10(a), "log10", a, 0.0F);
            for (const float b : special_values()) {
                qnl_pow(&a, &b, &d, 1);
                expect_like_library(d, std::pow(a, b), "pow", a, b);
                const complex32f z = {a, b};
                qnl_phase(&z, &d, 1);
                expect_like_library(d, std::atan2(b, a), "phase", a, b);
                complex32f unit;
                qnl_polar_to_cart(&a, &b, &unit, 1);
                expect_like_library(unit.re, static_cast<float>(double{a} * std::cos(double{b})), "polar re",
                                    a, b);
                expect_like_library(unit.im, static_cast<float>(double{a} * std::sin(double{b})), "polar im",
                                    a, b);
            }
        }
    });
}

TEST(VectorMath, TanhIsOddAndKeepsSmallArguments) {
    const std::vector<float> a = {1.0e-20F, 1.0e-5F, 0.3F, 2.0F, 9.0F, 20.0F};
    for (const float x : a) {
        const float minus_x = -x;
        float positive = 0.0F;
        float negative = 0.0F;
        qnl_tanh(&x, &positive, 1);
        qnl_tanh(&minus_x, &negative, 1);
        EXPECT_EQ(negative, -positive);
    }
    const float tiny = 1.0e-20F;
    float d = 0.0F;
    qnl_tanh(&tiny, &d, 1);
    EXPECT_EQ(d, tiny);
}

TEST(VectorMath, ZeroPowersAreExactlyOne) {
    const std::vector<float> ten(5, 10.0F);
    const std::vector<float> zero(5, 0.0F);
    const std::vector<float> one(5, 1.0F);
    std::vector<float> d(5);
    on_every_target([&](const char*) {
        qnl_pow(ten.data(), zero.data(), d.data(), 5);
        EXPECT_EQ(d, one);
        qnl_dB_to_linear(zero.data(), d.data(), 5);
        EXPECT_EQ(d, one);
        qnl_constant_to_power(zero.data(), d.data(), 10.0F, 5);
        EXPECT_EQ(d, one);
    });
}

TEST(VectorMath, ComplexQuotientsNeitherOverflowNorVanish) {
    const complex32f large = {2.0e38F, -1.0e38F};
    const complex32f small = {4.0e-38F, 2.0e-38F};
    on_every_target([&](const char*) {
        complex32f d;
        qnl_divide(&large, &large, &d, 1);
        EXPECT_EQ(d.re, 1.0F);
        EXPECT_EQ(d.im, 0.0F);
        qnl_divideC(&small, &d, small, 1);
        EXPECT_EQ(d.re, 1.0F);
        EXPECT_EQ(d.im, 0.0F);
        const complex32f zero = {0.0F, 0.0F};
        qnl_divide(&zero, &large, &d, 1);
        EXPECT_TRUE(std::isnan(d.re) && std::isnan(d.im));
    });
}

} // namespace
