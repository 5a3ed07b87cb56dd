#include "dsp/flush_to_zero.h"

#include <cfenv>
#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

namespace {

/// Half of the smallest normal number: a denormal, or 0 while results are flushed.
float denormal_result() {
    volatile float smallest = std::numeric_limits<float>::min();
    volatile float half = 0.5F;
    return smallest * half;
}

/// Whether a denormal counts as a number rather than as 0.
bool denormals_count() {
    volatile float denormal = std::numeric_limits<float>::denorm_min();
    return denormal > 0.0F;
}

TEST(FlushToZero, FlushesInItsScopeAlone) {
#if defined(__x86_64__) || defined(__aarch64__)
    ASSERT_TRUE(denormals_count());
    {
        const flush_to_zero guard;
        EXPECT_EQ(denormal_result(), 0.0F);
        { const flush_to_zero nested; }
        EXPECT_FALSE(denormals_count());
    }
    EXPECT_GT(denormal_result(), 0.0F);
    EXPECT_TRUE(denormals_count());
#endif
}

TEST(FlushToZero, KeepsTheHostsOtherSettingsAlsoWhenAnExceptionLeaves) {
    ASSERT_EQ(std::fesetround(FE_DOWNWARD), 0);
    int inside = 0;
    try {
        const flush_to_zero guard;
        inside = std::fegetround();
        throw std::runtime_error("out");
    } catch (const std::runtime_error&) {
        EXPECT_TRUE(denormals_count());
    }
    const int after = std::fegetround();
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(inside, FE_DOWNWARD);
    EXPECT_EQ(after, FE_DOWNWARD);
}

} // namespace
