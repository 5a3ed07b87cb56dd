// The signals, and the measurements taken of them.
#include "kit/signals.h"

#include "kit/compare.h"
#include "kit/measure.h"

#include <gtest/gtest.h>

namespace {

using test_kit::same_bits;
using test_kit::sine;

TEST(signals, noise_depends_on_its_seed_alone_and_fills_its_range) {
    const std::vector<float> x = test_kit::noise(48000, 7, 0.5F);
    EXPECT_TRUE(same_bits(x, test_kit::noise(48000, 7, 0.5F)));
    EXPECT_FALSE(same_bits(x, test_kit::noise(48000, 8, 0.5F)));
    EXPECT_LE(test_kit::peak(x), 0.5F);
    EXPECT_GT(test_kit::peak(x), 0.499F);
    // Pinned: a recorded reference made from this noise stays valid.
    EXPECT_FLOAT_EQ(test_kit::noise(1, 1)[0], -0.165956F);
}

TEST(signals, sine_impulse_and_stereo_are_where_they_should_be) {
    const std::vector<float> x = sine(480, 1000.0, 0.5F);
    EXPECT_EQ(x[0], 0.0F);
    EXPECT_NEAR(x[12], 0.5F, 1e-7);
    EXPECT_NEAR(sine(80, 1000.0, 0.5F, 8000.0)[2], 0.5F, 1e-7);
    EXPECT_TRUE(same_bits(test_kit::impulse(4, 2, 0.25F), {0.0F, 0.0F, 0.25F, 0.0F}));
    EXPECT_TRUE(same_bits(test_kit::planar({1.0F, 2.0F}, {3.0F, 4.0F}), {1.0F, 2.0F, 3.0F, 4.0F}));
}

TEST(signals, speech_has_syllables_pauses_and_a_voice) {
    const std::vector<float> x = test_kit::speech_like(96000, 5);
    EXPECT_FLOAT_EQ(test_kit::peak(x), 0.5F);
    EXPECT_TRUE(same_bits(x, test_kit::speech_like(96000, 5)));
    const auto part = [&x](int from, int to) { return std::vector<float>(x.begin() + from, x.begin() + to); };
    EXPECT_LT(test_kit::peak(part(37000, 47000)), 1e-5F) << "a pause";
    EXPECT_GT(test_kit::peak(part(16000, 20000)), 0.05F) << "a syllable";
    EXPECT_GT(test_kit::peak(part(52000, 56000)), 0.05F) << "speech after the pause";
    // Voiced: in the falling half of a syllable it resembles itself most after one period of the pitch.
    const std::size_t period =
        120 + test_kit::find_delay(part(18000, 20000), part(18120, 22000), 660).value();
    EXPECT_GT(period, 48000U / 210U);
    EXPECT_LT(period, 48000U / 85U);
}

TEST(measurements, find_a_delay_whatever_gain_and_sign) {
    const std::vector<float> reference = test_kit::noise(2000, 3);
    for (const std::size_t delay : {0U, 1U, 480U}) {
        std::vector<float> delayed(delay);
        for (const float value : reference)
            delayed.push_back(-0.1F * value);
        delayed.resize(2100);
        EXPECT_EQ(test_kit::find_delay(reference, delayed, 900), delay);
    }
    EXPECT_EQ(test_kit::find_delay(reference, std::vector<float>(2000), 900), std::nullopt);
}

TEST(measurements, tell_the_gains_of_two_tones_apart) {
    const std::vector<float> high = sine(4800, 3000.0, 0.5F);
    std::vector<float> both = sine(4800, 1000.0, 0.25F);
    for (std::size_t i = 0; i < both.size(); ++i)
        both[i] += high[i];
    EXPECT_NEAR(test_kit::gain_db_at(both, high, 3000.0), 0.0, 1e-4);
    EXPECT_LT(test_kit::gain_db_at(both, high, 1000.0), -80.0);
    EXPECT_NEAR(test_kit::gain_db_at(sine(4800, 1000.0, 0.5F), both, 1000.0), -6.0206, 1e-4);
}

} // namespace
