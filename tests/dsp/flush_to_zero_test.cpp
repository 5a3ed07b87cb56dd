#include "dsp/flush_to_zero.h"

#include <cfenv>
#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

namespace {

// Half of the smallest normal number is a denormal, or 0 while results are flushed; a denormal is more than 0, unless
// it counts as 0.
volatile float smallest = std::numeric_limits<float>::min();
volatile float denormal = std::numeric_limits<float>::denorm_min();

TEST(FlushToZero, FlushesInItsScopeAloneAndKeepsTheHostsOtherSettings) {
#if defined(__x86_64__) || defined(__aarch64__)
    ASSERT_EQ(std::fesetround(FE_DOWNWARD), 0);
    int inside = 0;
    try {
        const flush_to_zero guard;
        inside = std::fegetround();
        EXPECT_EQ(smallest * 0.5F, 0.0F);
        { const flush_to_zero nested; }
        EXPECT_FALSE(denormal > 0.0F);
        throw std::runtime_error("out");
    } catch (const std::runtime_error&) {
        EXPECT_GT(smallest * 0.5F, 0.0F);
        EXPECT_TRUE(denormal > 0.0F);
    }
    const int after = std::fegetround();
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(inside, FE_DOWNWARD);
    EXPECT_EQ(after, FE_DOWNWARD);
#endif
}

} // namespace
