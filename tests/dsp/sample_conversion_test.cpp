#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/sample_conversion.h"
#include "dsp/vector_checks.h"

namespace {

using namespace vector_checks;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();

// The sample rules, one value at a time.

float planar_from(short x) {
    return static_cast<float>(x) * 0.000030517578125F;
}

float stereo_from(short x) {
    return static_cast<float>(x) * 3.0518e-5F;
}

short held_to_short(double x) {
    if (std::isnan(x))
        return 0;
    return static_cast<short>(x < -32768.0 ? -32768.0 : (x > 32767.0 ? 32767.0 : x));
}

short planar_to_short(float x) {
    return held_to_short(std::nearbyint(double{x} * 32768.0));
}

short stereo_to_short(float x) {
    return held_to_short(std::trunc(double{x} * 32768.0));
}

std::vector<float> float_samples(int n, unsigned seed) {
    std::vector<float> values = test_values(n, seed);
    for (std::size_t i = 0; i < values.size(); ++i) // most of them within full scale, many on a half step
        if (i % 3 != 0)
            values[i] =
                static_cast<float>(static_cast<int>((i + seed) * 2654435761U % 131072U) - 65536) / 65536.0F;
    return values;
}

template <class Element>
std::vector<Element> samples(int n, unsigned seed) {
    const std::vector<float> values = float_samples(n, seed);
    std::vector<Element> converted(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        converted[i] = static_cast<Element>(held_to_short(double{values[i]} * 40000.0));
    return converted;
}

template <>
std::vector<float> samples<float>(int n, unsigned seed) {
    return float_samples(n, seed);
}

template <>
std::vector<double> samples<double>(int n, unsigned seed) {
    const std::vector<float> values = float_samples(n, seed);
    std::vector<double> widened(values.begin(), values.end());
    for (double& value : widened)
        value *= 1.0 + 1.0e-9; // not a float any more
    return widened;
}

/// A conversion of `n` units of `width` samples, and where sample j of the result comes from and how.
template <class From, class To>
void expect_conversion(const char* name, int width, void (*run)(const From*, To*, int),
                       int (*source_of)(int j, int n), To (*formula)(From)) {
    on_every_target([&](const char* target) {
        for (int n = 0; n <= longest_count; ++n)
            for (int offset = 0; offset < 16; ++offset) {
                const std::vector<From> from =
                    samples<From>(width * n, static_cast<unsigned>(16 * n + offset));
                source_block<From> source(from.data(), width * n, offset);
                guarded_block<To> result(width * n, (3 * offset) % 16);
                run(source.data(), result.data(), n);
                for (int j = 0; j < width * n; ++j)
                    ASSERT_TRUE(
                        same_bits(result.data()[j], formula(from[static_cast<std::size_t>(source_of(j, n))])))
                        << name << " on " << target << ", n " << n << ", offset " << offset << ", sample "
                        << j << ": " << result.data()[j];
                ASSERT_TRUE(result.walls_stand())
                    << name << " on " << target << ", n " << n << ", offset " << offset;
            }
    });
}

int same_place(int j, int) {
    return j;
}

int from_interleaved(int j, int n) {
    return j < n ? 2 * j : 2 * (j - n) + 1;
}

int from_planar(int j, int n) {
    return j % 2 == 0 ? j / 2 : n + j / 2;
}

template <class To, class From>
To plainly(From x) {
    return static_cast<To>(x);
}

TEST(SampleConversion, EveryTargetConvertsSampleBySample) {
    expect_conversion<short, float>("from short", 1, qnl_convert, same_place, planar_from);
    expect_conversion<float, short>("to short", 1, qnl_convert, same_place, planar_to_short);
    expect_conversion<float, double>("to double", 1, qnl_convert, same_place, plainly<double, float>);
    expect_conversion<double, float>("from double", 1, qnl_convert, same_place, plainly<float, double>);
}

TEST(SampleConversion, EveryTargetInterleavesAndDeinterleaves) {
    expect_conversion<short, float>("deinterleave short", 2, qnl_deinterleave, from_interleaved, stereo_from);
    expect_conversion<float, float>("deinterleave float", 2, qnl_deinterleave, from_interleaved,
                                    plainly<float, float>);
    expect_conversion<double, float>("deinterleave double", 2, qnl_deinterleave, from_interleaved,
                                     plainly<float, double>);
    expect_conversion<float, short>("interleave short", 2, qnl_interleave, from_planar, stereo_to_short);
    expect_conversion<float, float>("interleave float", 2, qnl_interleave, from_planar,
                                    plainly<float, float>);
    expect_conversion<float, double>("interleave double", 2, qnl_interleave, from_planar,
                                     plainly<double, float>);
}

TEST(SampleConversion, TheTwoRoadsOfShortsDifferAsWanted) {
    constexpr float half_step = 0.5F / 32768.0F;
    const std::vector<float> x = {
        1.0F,     -1.0F,     3.0F * half_step, -3.0F * half_step, half_step, 1.9F * half_step,
        infinity, -infinity, not_a_number,     1.0e30F,           -1.0e30F,  0.99999F};
    const std::vector<short> rounded = {32767, -32768, 2, -2, 0, 1, 32767, -32768, 0, 32767, -32768, 32767};
    const std::vector<short> truncated = {32767, -32768, 1, -1, 0, 0, 32767, -32768, 0, 32767, -32768, 32767};
    std::vector<float> stereo = x;
    stereo.insert(stereo.end(), x.begin(), x.end());
    on_every_target([&](const char* target) {
        std::vector<short> d(x.size());
        qnl_convert(x.data(), d.data(), static_cast<int>(x.size()));
        EXPECT_EQ(d, rounded) << target;
        std::vector<short> pairs(stereo.size());
        qnl_interleave(stereo.data(), pairs.data(), static_cast<int>(x.size()));
        for (std::size_t i = 0; i < x.size(); ++i) {
            EXPECT_EQ(pairs[2 * i], truncated[i]) << target << ", sample " << i;
            EXPECT_EQ(pairs[2 * i + 1], truncated[i]) << target << ", sample " << i;
        }
    });
}

TEST(SampleConversion, EveryShortSurvivesThePlanarRoad) {
    constexpr int n = 65536;
    std::vector<short> all(n);
    for (int i = 0; i < n; ++i)
        all[static_cast<std::size_t>(i)] = static_cast<short>(i - 32768);
    std::vector<float> middle(n);
    std::vector<short> back(n);
    on_every_target([&](const char*) {
        qnl_convert(all.data(), middle.data(), n);
        EXPECT_EQ(middle[0], -1.0F);
        qnl_convert(middle.data(), back.data(), n);
        EXPECT_EQ(back, all);
    });
}

TEST(SampleConversion, DoublesBeyondFloatsBecomeInfinite) {
    const std::vector<double> a = {1.0e300, -1.0e300, 1.0e-300};
    std::vector<float> d(3);
    on_every_target([&](const char*) {
        qnl_convert(a.data(), d.data(), 3);
        EXPECT_EQ(d, (std::vector<float>{infinity, -infinity, 0.0F}));
    });
}

TEST(SampleConversion, ScalesInPlaceWithTheTwoFactors) {
    std::vector<float> x = {1.0F, -0.5F, 7.0F};
    expand_float_to_short_values(x.data(), 2);
    EXPECT_EQ(x, (std::vector<float>{32768.0F, -16384.0F, 7.0F}));
    compress_float_to_short_values(x.data(), 2);
    EXPECT_EQ(x, (std::vector<float>{32768.0F * 3.0518e-5F, -16384.0F * 3.0518e-5F, 7.0F}));
}

TEST(SampleConversion, BlocksAndChannelPointers) {
    std::vector<float> block = {1, 2, 3, 4, 5, 6};
    float* channels[3] = {};
    convert_block_to_pointer(block.data(), channels, 2, 3);
    EXPECT_EQ(channels[0], block.data());
    EXPECT_EQ(channels[2], block.data() + 4);

    std::vector<float> other(7, 9.0F);
    channels[1] = nullptr;
    convert_pointer_to_block(channels, other.data(), 2, 3);
    EXPECT_EQ(other, (std::vector<float>{1, 2, 9, 9, 5, 6, 9}));
}

TEST(SampleConversion, NullPointersAndCountsBelowOneDoNothing) {
    short s = 3;
    float f[2] = {4.0F, 5.0F};
    for (const int n : {0, -1}) {
        qnl_convert(&s, f, n);
        qnl_convert(f, &s, n);
        qnl_deinterleave(&s, f, n);
        qnl_interleave(f, &s, n);
        expand_float_to_short_values(f, n);
        convert_pointer_to_block(nullptr, f, n, 1);
    }
    qnl_convert(static_cast<const short*>(nullptr), f, 1);
    qnl_convert(f, static_cast<short*>(nullptr), 1);
    qnl_deinterleave(static_cast<const double*>(nullptr), f, 1);
    qnl_interleave(f, static_cast<double*>(nullptr), 1);
    convert_block_to_pointer(f, nullptr, 1, 1);
    convert_pointer_to_block(nullptr, f, 1, 1);
    EXPECT_EQ(s, 3);
    EXPECT_EQ(f[0], 4.0F);
    EXPECT_EQ(f[1], 5.0F);
}

} // namespace
