#include "dsp/sample_conversion.h"

#include "dsp/vector_checks.h"
#include "dsp/vector_primitives.h"

#include <type_traits>

namespace {

using namespace vector_checks;

short held_to_short(double x) {
    return std::isnan(x) ? short{0} : static_cast<short>(std::clamp(x, -32768.0, 32767.0));
}

/// A third of all kinds, the others within full scale, many of them on a half step of a short.
template <class Element>
std::vector<Element> samples(int n, unsigned seed) {
    std::vector<Element> made;
    for (const float any : test_values(n, seed)) {
        const auto i = static_cast<unsigned>(made.size());
        const int half_steps = static_cast<int>((i + seed) * 2654435761U % 131072U) - 65536;
        const double value = i % 3 == 0 ? double{any} : half_steps / 65536.0;
        if constexpr (std::is_same_v<Element, short>)
            made.push_back(held_to_short(value * 40000.0));
        else // as a double it is no float any more
            made.push_back(static_cast<Element>(value * (1.0 + 1.0e-9)));
    }
    return made;
}

/// A conversion of `n` units of `width` samples, and where sample j of the result comes from and how.
template <class From, class To>
void expect_conversion(const char* name, int width, void (*run)(const From*, To*, int),
                       int (*source_of)(int j, int n), To (*formula)(From)) {
    on_every_target([&](const char* target) {
        for (int n = 0; n <= longest_count; ++n)
            for (int offset = 0; offset < 16; ++offset) {
                const auto from = samples<From>(width * n, static_cast<unsigned>(16 * n + offset));
                const auto source = behind(offset, from);
                const int start = wall + 3 * offset % 16;
                auto expected = walled(start - wall, std::vector<To>(from.size()));
                auto result = expected;
                run(source.data() + offset, result.data() + start, n);
                for (int j = 0; j < width * n; ++j)
                    expected[start + j] = formula(from[source_of(j, n)]);
                ASSERT_TRUE(same_blocks(expected, result))
                    << name << " on " << target << ", n " << n << ", offset " << offset;
            }
    });
    To untouched = 3;
    From source = 4;
    for (const int none : {0, -1})
        run(&source, &untouched, none);
    run(nullptr, &untouched, 1);
    run(&source, nullptr, 1);
    EXPECT_EQ(untouched, To{3}) << name;
}

TEST(SampleConversion, EveryTargetConvertsSampleBySample) {
    const auto same = [](int j, int) { return j; };
    expect_conversion<short, float>("from short", 1, qnl_convert, same,
                                    [](short x) { return static_cast<float>(x) / 32768.0F; });
    expect_conversion<float, short>("to short", 1, qnl_convert, same, [](float x) {
        return held_to_short(std::nearbyint(double{x} * 32768.0));
    });
    expect_conversion<float, double>("to double", 1, qnl_convert, same, [](float x) { return double{x}; });
    expect_conversion<double, float>("from double", 1, qnl_convert, same,
                                     [](double x) { return static_cast<float>(x); });
}

void split_complex(const float* a, float* d, int n) {
    qnl_complex_to_real(reinterpret_cast<const complex32f*>(a), d, d == nullptr ? nullptr : d + n, n);
}

TEST(SampleConversion, EveryTargetInterleavesAndDeinterleaves) {
    const auto apart = [](int j, int n) { return j < n ? 2 * j : 2 * (j - n) + 1; };
    const auto together = [](int j, int n) { return j % 2 == 0 ? j / 2 : n + j / 2; };
    const auto same = [](float x) { return x; };
    expect_conversion<float, float>("split complex", 2, split_complex, apart, same);
    expect_conversion<float, float>("split float", 2, qnl_deinterleave, apart, same);
    expect_conversion<float, float>("join float", 2, qnl_interleave, together, same);
    expect_conversion<short, float>("split short", 2, qnl_deinterleave, apart,
                                    [](short x) { return static_cast<float>(x) * 3.0518e-5F; });
    expect_conversion<float, short>("join short", 2, qnl_interleave, together,
                                    [](float x) { return held_to_short(std::trunc(double{x} * 32768.0)); });
    expect_conversion<double, float>("split double", 2, qnl_deinterleave, apart,
                                     [](double x) { return static_cast<float>(x); });
    expect_conversion<float, double>("join double", 2, qnl_interleave, together,
                                     [](float x) { return double{x}; });
}

TEST(SampleConversion, ScalesInPlaceWithTheTwoFactors) {
    std::vector<float> x = {1.0F, -0.5F, 7.0F};
    expand_float_to_short_values(x.data(), 2);
    EXPECT_EQ(x, (std::vector<float>{32768.0F, -16384.0F, 7.0F}));
    compress_float_to_short_values(x.data(), 2);
    expand_float_to_short_values(x.data(), 0);
    EXPECT_EQ(x, (std::vector<float>{32768.0F * 3.0518e-5F, -16384.0F * 3.0518e-5F, 7.0F}));
}

TEST(SampleConversion, BlocksAndChannelPointersLeadToEachOther) {
    std::vector<float> block = {1, 2, 3, 4, 5, 6};
    float* channels[3] = {};
    convert_block_to_pointer(block.data(), channels, 2, 3);
    convert_block_to_pointer(block.data(), nullptr, 1, 1);
    EXPECT_THAT(channels, testing::ElementsAre(&block[0], &block[2], &block[4]));

    std::vector<float> other(7, 9.0F);
    channels[1] = nullptr;
    convert_pointer_to_block(channels, other.data(), 2, 3);
    convert_pointer_to_block(nullptr, other.data(), 1, 1);
    EXPECT_EQ(other, (std::vector<float>{1, 2, 9, 9, 5, 6, 9}));
}

} // namespace
