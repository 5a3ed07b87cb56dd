#include "kit/compare.h"

#include <gmock/gmock.h>

#include <limits>

namespace {

using testing::HasSubstr;

constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();

TEST(compare, same_bits_tells_zeros_apart_and_names_the_first_difference) {
    EXPECT_TRUE(test_kit::same_bits<float>({1.0F, not_a_number}, {1.0F, not_a_number}));
    EXPECT_FALSE(test_kit::same_bits<float>({1.0F, 2.0F}, {1.0F}));
    const auto result = test_kit::same_bits<float>({1.0F, 0.0F, 5.0F}, {1.0F, -0.0F, 6.0F});
    EXPECT_FALSE(result);
    EXPECT_THAT(result.message(), HasSubstr("index 1 of 3"));
}

TEST(compare, error_is_measured_against_the_expected_signal) {
    const std::vector<float> expected(100, 0.5F);
    std::vector<float> actual(100, 0.505F);
    actual[0] = 0.5F;
    EXPECT_TRUE(test_kit::error_below(expected, actual, -40.0));
    const auto result = test_kit::error_below(expected, actual, -40.1);
    EXPECT_FALSE(result);
    EXPECT_THAT(result.message(),
                testing::ContainsRegex("index 1 of 100: 0.5 expected, not 0.5.*; error -40.0"));
    EXPECT_TRUE(test_kit::error_below({0.0F}, {0.0F}, -300.0));
    EXPECT_FALSE(test_kit::error_below({0.0F}, {0.1F}, 300.0));
    EXPECT_FALSE(test_kit::error_below({1.0F}, {not_a_number}, 300.0));
    EXPECT_FALSE(test_kit::error_below({1.0F}, {1.0F, 1.0F}, 300.0));
}

} // namespace
