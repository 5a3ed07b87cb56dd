#include "kit/compare.h"

#include <cmath>
#include <limits>

namespace test_kit {
namespace {

/// The first index at which the values are further apart than `tolerance`; the size when there is none.
std::size_t first_difference(const std::vector<float>& expected, const std::vector<float>& actual,
                             float tolerance) {
    std::size_t i = 0;
    while (i < expected.size() &&
           (expected[i] == actual[i] || std::abs(actual[i] - expected[i]) <= tolerance))
        ++i;
    return i;
}

testing::AssertionResult different_sizes(const std::vector<float>& expected,
                                         const std::vector<float>& actual) {
    return testing::AssertionFailure() << expected.size() << " samples expected, not " << actual.size();
}

testing::AssertionResult differs_at(std::size_t index, const std::vector<float>& expected,
                                    const std::vector<float>& actual) {
    return testing::AssertionFailure()
           << "first difference at index " << index << " of " << expected.size() << ": " << expected[index]
           << " expected, not " << actual[index] << "; error " << error_db(expected, actual) << " dB";
}

} // namespace

double error_db(const std::vector<float>& expected, const std::vector<float>& actual) {
    double signal = 0.0;
    double error = 0.0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const double difference = static_cast<double>(actual.at(i)) - static_cast<double>(expected[i]);
        signal += static_cast<double>(expected[i]) * static_cast<double>(expected[i]);
        error += difference * difference;
    }
    if (error == 0.0)
        return -std::numeric_limits<double>::infinity();
    const bool measurable = std::isfinite(error) && signal > 0.0;
    return measurable ? 10.0 * std::log10(error / signal) : std::numeric_limits<double>::infinity();
}

testing::AssertionResult error_below(const std::vector<float>& expected, const std::vector<float>& actual,
                                     double limit_db) {
    if (expected.size() != actual.size())
        return different_sizes(expected, actual);
    if (error_db(expected, actual) <= limit_db)
        return testing::AssertionSuccess();
    return differs_at(first_difference(expected, actual, 0.0F), expected, actual);
}

testing::AssertionResult all_within(const std::vector<float>& expected, const std::vector<float>& actual,
                                    float tolerance) {
    if (expected.size() != actual.size())
        return different_sizes(expected, actual);
    const std::size_t index = first_difference(expected, actual, tolerance);
    return index == expected.size() ? testing::AssertionSuccess() : differs_at(index, expected, actual);
}

} // namespace test_kit
