#include "dsp/vector_checks.h"
#include "dsp/vector_primitives.h"

#include <random>

namespace {

using namespace vector_checks;

std::vector<float> spread(float low, float high) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> distribution(low, high);
    std::vector<float> values(4000);
    std::generate(values.begin(), values.end(), [&] { return distribution(random); });
    return values;
}

// One element through a function of the layer.

float of(void (*function)(const float*, float*, int), float a) {
    function(&a, &a, 1);
    return a;
}

float power(float a, float b) {
    qnl_pow(&a, &b, &a, 1);
    return a;
}

float phase(complex32f value) {
    float d = 0.0F;
    qnl_phase(&value, &d, 1);
    return d;
}

complex32f polar(float magnitude, float angle) {
    complex32f d = {};
    qnl_polar_to_cart(&magnitude, &angle, &d, 1);
    return d;
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
            EXPECT_EQ(of(qnl_tanh, -a), -of(qnl_tanh, a));
            EXPECT_LE(of(qnl_tanh, a), 1.0F);
            expect_relative(of(qnl_tanh, a), std::tanh(double{a}), 5.0e-7, "tanh", a);
        }
}

TEST(VectorMath, SigmoidHasTheBitsOfTheLibrarysExponential) {
    for (const float limit : {1.0e-20F, 0.1F, 10.0F, 88.0F, 1.0e4F})
        for (const float a : spread(0.0F, limit))
            for (const float b : {a, -a})
                EXPECT_EQ(of(qnl_sigmoid, b), 1.0F / (1.0F + std::exp(-b))) << b;
}

TEST(VectorMath, LogarithmIsGoodToSixDigitsAroundOneToo) {
    for (const auto& [low, high] :
         {std::pair{1.0e-38F, 1.0e-30F}, {1.0e-3F, 0.1F}, {0.99F, 1.01F}, {0.5F, 2.0F}, {1.0F, 3.0e38F}})
        for (const float a : spread(low, high))
            expect_relative(of(qnl_log10, a), std::log10(double{a}), 4.0e-7, "log10", a);
}

TEST(VectorMath, PowerPhaseAndCartesianAreGoodToSinglePrecision) {
    constexpr double half_a_step = 6.5e-8; // of a float's 24 bits, and a little for the polynomials
    const std::vector<float> base = spread(0.01F, 40.0F);
    const std::vector<float> exponent = spread(-25.0F, 25.0F);
    for (std::size_t i = 0; i < base.size(); ++i) {
        const float a = base[i];
        const float b = exponent[i];
        expect_relative(power(a, b), std::pow(double{a}, double{b}), half_a_step, "pow", a);
        const float im = i % 2 == 0 ? a - 20.0F : base[base.size() - 1 - i] * b * 1.0e-3F;
        expect_relative(phase({b, im}), std::atan2(double{im}, double{b}), half_a_step, "phase", b);
        // Angles of every size; the C library reduces a double exactly, and every float is one.
        const float angle = std::ldexp(1.0F + a / 64.0F, static_cast<int>(i % 140) - 12);
        EXPECT_NEAR(polar(1.0F, angle).re, std::cos(double{angle}), 1.0e-7) << angle;
        EXPECT_NEAR(polar(1.0F, angle).im, std::sin(double{angle}), 1.0e-7) << angle;
    }
}

/// The same value, or the nearest but one: what special values lead to is exact or single precision.
void expect_like_library(float got, double wanted, const char* what, float a, float b = 0.0F) {
    SCOPED_TRACE(testing::Message() << what << " of " << a << ", " << b);
    const auto want = static_cast<float>(wanted);
    EXPECT_EQ(std::isnan(got), std::isnan(want));
    if (std::isnan(want))
        return;
    EXPECT_FLOAT_EQ(got, want);
    EXPECT_EQ(std::signbit(got), std::signbit(want));
}

// On the scalar target, whose bits the others repeat.
TEST(VectorMath, SpecialValuesGoTheWayOfTheCLibrary) {
    for (const float a : turning_points()) {
        expect_like_library(of(qnl_tanh, a), std::tanh(a), "tanh", a);
        expect_like_library(of(qnl_sigmoid, a), 1.0F / (1.0F + std::exp(-a)), "sigmoid", a);
        expect_like_library(of(qnl_log10, a), std::log10(a), "log10", a);
        for (const float b : turning_points()) {
            expect_like_library(power(a, b), std::pow(a, b), "pow", a, b);
            expect_like_library(phase({a, b}), std::atan2(b, a), "phase", a, b);
            expect_like_library(polar(a, b).re, double{a} * std::cos(double{b}), "re", a, b);
            expect_like_library(polar(a, b).im, double{a} * std::sin(double{b}), "im", a, b);
        }
    }
    EXPECT_EQ(power(10.0F, 0.0F), 1.0F);
}

} // namespace
