/// Comparisons of sample buffers that say where and by how much two buffers differ.
///
///     EXPECT_TRUE(test_kit::same_bits(expected, actual));
///     EXPECT_TRUE(test_kit::error_below(expected, actual, -120.0));
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace test_kit {

/// Passes when the power of actual - expected is at most `limit_db` over the power of expected. Says the error
/// and the first index whose values differ otherwise. A NaN or infinity in the difference always fails.
testing::AssertionResult error_below(const std::vector<float>& expected, const std::vector<float>& actual,
                                     double limit_db);

/// Passes when every value has the same bytes: -0 differs from 0, and a NaN equals itself.
template <typename Sample>
testing::AssertionResult same_bits(const std::vector<Sample>& expected, const std::vector<Sample>& actual) {
    if (expected.size() != actual.size())
        return testing::AssertionFailure() << expected.size() << " values expected, not " << actual.size();
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (std::memcmp(&expected[i], &actual[i], sizeof(Sample)) != 0)
            return testing::AssertionFailure()
                   << "first difference at index " << i << " of " << expected.size() << ": "
                   << testing::PrintToString(expected[i]) << " expected, not "
                   << testing::PrintToString(actual[i]);
    }
    return testing::AssertionSuccess();
}

} // namespace test_kit
