#include "kit/compare.h"

#include <gmock/gmock.h>

#include <limits>

namespace {

using testing::HasSubstr;

constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();

TEST(compare, same_bits_tells_zeros_apart_and_names_the_first_difference) {
    EXPECT_TRUE(test_kit::same_bits<float>({1.0F, not_a_number}, {1.0F, not_a_number}));
    EXPECT_FALSE(test_kit::same_bits<float>({1.0F, 2.0F}, {1.0F}));
    const testing::AssertionResult result =
        test_kit::same_bits<float>({1.0F, 0.0F, 5.0F}, {1.0F, -0.0F, 6.0F});
    EXPECT_FALSE(result);
    EXPECT_THAT(result.message(), HasSubstr("index 1 of 3"));
    EXPECT_FALSE(test_kit::same_bits<short>({1}, {2}));
}

TEST(compare, error_is_measured_against_the_expected_signal) {
    const std::vector<float> expected(100, 0.5F);
    const std::vector<float> actual(100, 0.505F);
    EXPECT_NEAR(test_kit::error_db(expected, actual), -40.0, 0.01);
    EXPECT_TRUE(test_kit::error_below(expected, actual, -39.9));
    EXPECT_FALSE(test_kit::error_below(expected, actual, -40.1));
    EXPECT_TRUE(test_kit::error_below(expected, expected, -300.0));
    EXPECT_EQ(test_kit::error_db({0.0F}, {0.1F}), std::numeric_limits<double>::infinity());
}

TEST(compare, a_nan_is_never_close) {
    EXPECT_FALSE(test_kit::error_below({1.0F}, {not_a_number}, 100.0));
    EXPECT_FALSE(test_kit::all_within({1.0F}, {not_a_number}, 100.0F));
    EXPECT_FALSE(test_kit::all_within({not_a_number}, {1.0F}, 100.0F));
    EXPECT_TRUE(test_kit::all_within({1.0F, 2.0F}, {1.5F, 1.5F}, 0.5F));
    EXPECT_FALSE(test_kit::all_within({1.0F, 2.0F}, {1.5F, 1.4F}, 0.5F));
}

} // namespace
