#include "kit/signals.h"

#include "kit/compare.h"
#include "kit/measure.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

TEST(signals, noise_depends_on_its_seed_alone_and_fills_its_range) {
    const std::vector<float> x = test_kit::noise(48000, 7, 0.5F);
    EXPECT_TRUE(test_kit::same_bits(x, test_kit::noise(48000, 7, 0.5F)));
    EXPECT_FALSE(test_kit::same_bits(x, test_kit::noise(48000, 8, 0.5F)));
    EXPECT_LE(test_kit::peak(x), 0.5F);
    EXPECT_GT(test_kit::peak(x), 0.499F);
    EXPECT_NEAR(std::accumulate(x.begin(), x.end(), 0.0) / 48000.0, 0.0, 0.005);
    // Pinned: a recorded reference made from this noise stays valid.
    EXPECT_FLOAT_EQ(test_kit::noise(1, 1)[0], -0.165956F);
}

TEST(signals, sine_and_impulse_are_where_they_should_be) {
    const std::vector<float> x = test_kit::sine(480, 1000.0, 0.5F);
    EXPECT_EQ(x[0], 0.0F);
    EXPECT_NEAR(x[12], 0.5F, 1e-7);
    EXPECT_NEAR(test_kit::sine(80, 1000.0, 0.5F, 8000.0)[2], 0.5F, 1e-7);
    EXPECT_TRUE(test_kit::same_bits(test_kit::impulse(4, 2, 0.25F), {0.0F, 0.0F, 0.25F, 0.0F}));
}

TEST(signals, speech_has_syllables_pauses_and_a_voice) {
    const std::vector<float> x = test_kit::speech_like(96000, 5);
    EXPECT_FLOAT_EQ(test_kit::peak(x), 0.5F);
    EXPECT_TRUE(test_kit::same_bits(x, test_kit::speech_like(96000, 5)));
    const auto part = [&x](int from, int to) { return std::vector<float>(x.begin() + from, x.begin() + to); };
    EXPECT_LT(test_kit::level_db(part(37000, 47000)), -100.0) << "a pause";
    EXPECT_GT(test_kit::level_db(part(16000, 20000)), -30.0) << "a syllable";
    EXPECT_GT(test_kit::level_db(part(52000, 56000)), -30.0) << "speech after the pause";
    // Voiced: in the falling half of a syllable it resembles itself most after one period of the pitch.
    const std::vector<float> reference = part(18000, 20000);
    const std::vector<float> later = part(18000 + 120, 22000);
    const std::size_t period = 120 + test_kit::find_delay(reference, later, 660).value();
    EXPECT_GT(period, 48000U / 210U);
    EXPECT_LT(period, 48000U / 85U);
}

TEST(signals, planar_puts_left_before_right) {
    EXPECT_TRUE(test_kit::same_bits(test_kit::planar({1.0F, 2.0F}, {3.0F, 4.0F}), {1.0F, 2.0F, 3.0F, 4.0F}));
}

} // namespace
