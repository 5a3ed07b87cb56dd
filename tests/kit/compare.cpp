#include "kit/compare.h"

#include <cmath>

namespace test_kit {

testing::AssertionResult error_below(const std::vector<float>& expected, const std::vector<float>& actual,
                                     double limit_db) {
    if (expected.size() != actual.size())
        return testing::AssertionFailure() << expected.size() << " samples expected, not " << actual.size();
    double signal = 0.0;
    double error = 0.0;
    std::size_t equal = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const double difference = static_cast<double>(actual[i]) - static_cast<double>(expected[i]);
        signal += static_cast<double>(expected[i]) * static_cast<double>(expected[i]);
        error += difference * difference;
        equal += equal == i && difference == 0.0 ? 1 : 0;
    }
    if (error == 0.0)
        return testing::AssertionSuccess();
    const double error_db = 10.0 * std::log10(error / signal);
    if (std::isfinite(error) && error_db <= limit_db)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "first difference at index " << equal << " of " << expected.size() << ": " << expected[equal]
           << " expected, not " << actual[equal] << "; error " << error_db << " dB";
}

} // namespace test_kit
