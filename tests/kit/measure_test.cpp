#include "kit/measure.h"

#include "kit/signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();

TEST(measure, finds_delay_whatever_gain_and_sign) {
    const std::vector<float> reference = test_kit::noise(2000, 3);
    for (const std::size_t delay : {std::size_t{0}, std::size_t{1}, std::size_t{480}}) {
        std::vector<float> delayed(delay, 0.0F);
        for (const float value : reference)
            delayed.push_back(-0.1F * value);
        delayed.resize(2100);
        EXPECT_EQ(test_kit::find_delay(reference, delayed, 900), delay);
    }
    EXPECT_EQ(test_kit::find_delay(reference, std::vector<float>(2000, 0.0F), 900), std::nullopt);
}

TEST(measure, reads_the_amplitude_of_one_of_two_tones) {
    std::vector<float> x = test_kit::sine(4800, 1000.0, 0.25F);
    const std::vector<float> other = test_kit::sine(4800, 3000.0, 0.5F);
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] += other[i];
    EXPECT_NEAR(test_kit::amplitude_at(x, 1000.0), 0.25, 1e-5);
    EXPECT_NEAR(test_kit::amplitude_at(x, 3000.0), 0.5, 1e-5);
    EXPECT_NEAR(test_kit::gain_db_at(x, other, 3000.0), 0.0, 1e-4);
    EXPECT_LT(test_kit::gain_db_at(x, other, 1000.0), -80.0);
}

TEST(measure, peak_and_level) {
    EXPECT_EQ(test_kit::peak({0.1F, -0.7F, 0.3F}), 0.7F);
    EXPECT_TRUE(std::isnan(test_kit::peak({0.1F, not_a_number, 0.3F})));
    EXPECT_NEAR(test_kit::level_db(test_kit::sine(4800, 100.0)), -3.01, 0.01);
    EXPECT_EQ(test_kit::level_db({0.0F, 0.0F}), -std::numeric_limits<double>::infinity());
}

} // namespace
