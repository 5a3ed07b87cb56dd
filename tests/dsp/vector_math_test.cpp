#include "dsp/vector_checks.h"
#include "dsp/vector_primitives.h"

namespace {

using namespace vector_checks;

std::vector<float> spread(float low, float high) {
    std::vector<float> values = test_kit::noise(4000, 11);
    for (float& value : values)
        value = low + (high - low) * (0.5F + 0.5F * value);
    return values;
}

/// One element through a function of the layer.
template <class D = float, class Function, class... Sources>
D of(Function* function, Sources... sources) {
    D d = {};
    function(&sources..., &d, 1);
    return d;
}

/// Compares with double precision; what a float can't hold as a normal number is left to the special values.
void expect_relative(float got, double want, double tolerance) {
    const double size = std::fabs(want);
    if (size < double{std::numeric_limits<float>::min()} || size > double{std::numeric_limits<float>::max()})
        return;
    EXPECT_LE(std::fabs(got - want), tolerance * size) << got << ", not " << want;
}

TEST(VectorMath, TanhIsOddWithinOneAndGoodToSixDigits) {
    for (const float limit : {1.0e-30F, 1.0e-3F, 0.5F, 9.5F, 1.0e4F})
        for (const float a : spread(0.0F, limit)) {
            EXPECT_EQ(of(qnl_tanh, -a), -of(qnl_tanh, a));
            EXPECT_LE(of(qnl_tanh, a), 1.0F);
            expect_relative(of(qnl_tanh, a), std::tanh(double{a}), 5.0e-7);
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
            expect_relative(of(qnl_log10, a), std::log10(double{a}), 4.0e-7);
}

TEST(VectorMath, PowerPhaseAndCartesianAreGoodToSinglePrecision) {
    constexpr double half_a_step = 6.5e-8; // of a float's 24 bits, and a little for the polynomials
    const std::vector<float> base = spread(0.01F, 40.0F);
    const std::vector<float> exponent = spread(-25.0F, 25.0F);
    for (std::size_t i = 0; i < base.size(); ++i) {
        const float a = base[i];
        const float b = exponent[i];
        expect_relative(of(qnl_pow, a, b), std::pow(double{a}, double{b}), half_a_step);
        const float y = i % 2 == 0 ? a - 20.0F : base[base.size() - 1 - i] * b * 1.0e-3F;
        expect_relative(of(qnl_phase, complex32f{b, y}), std::atan2(double{y}, double{b}), half_a_step);
        // Angles of every size; the C library reduces a double exactly, and every float is one.
        const float angle = std::ldexp(1.0F + a / 64.0F, static_cast<int>(i % 140) - 12);
        const auto [re, im] = of<complex32f>(qnl_polar_to_cart, 1.0F, angle);
        EXPECT_NEAR(re, std::cos(double{angle}), 1.0e-7) << angle;
        EXPECT_NEAR(im, std::sin(double{angle}), 1.0e-7) << angle;
    }
}

/// The same value, or the nearest but one: what special values lead to is exact or single precision.
auto like(double wanted) {
    const auto want = static_cast<float>(wanted);
    const auto same_sign = [=](float x) { return std::isnan(x) || std::signbit(x) == std::signbit(want); };
    return testing::AllOf(testing::NanSensitiveFloatEq(want), testing::Truly(same_sign));
}

// On the scalar target, whose bits the others repeat.
TEST(VectorMath, SpecialValuesGoTheWayOfTheCLibrary) {
    for (const float a : turning_points()) {
        SCOPED_TRACE(a);
        EXPECT_THAT(of(qnl_tanh, a), like(std::tanh(a)));
        EXPECT_THAT(of(qnl_sigmoid, a), like(1.0F / (1.0F + std::exp(-a))));
        EXPECT_THAT(of(qnl_log10, a), like(std::log10(a)));
        for (const float b : turning_points()) {
            EXPECT_THAT(of(qnl_pow, a, b), like(std::pow(a, b))) << b;
            EXPECT_THAT(of(qnl_phase, complex32f{a, b}), like(std::atan2(b, a))) << b;
            const auto [re, im] = of<complex32f>(qnl_polar_to_cart, a, b);
            EXPECT_THAT(re, like(a * std::cos(double{b}))) << b;
            EXPECT_THAT(im, like(a * std::sin(double{b}))) << b;
        }
    }
    EXPECT_EQ(of(qnl_pow, 10.0F, 0.0F), 1.0F);
}

} // namespace
