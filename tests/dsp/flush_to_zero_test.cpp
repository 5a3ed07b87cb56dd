#include "dsp/flush_to_zero.h"

#include "kit/audio.h"

namespace {

// That the host's setting comes back is seen from outside, after whole audio calls.
#if defined(__x86_64__) || defined(__aarch64__)
TEST(FlushToZero, MakesDenormalResultsAndOperandsZeroAlsoBehindANestedGuard) {
    const volatile float smallest = std::numeric_limits<float>::min();
    const volatile float denormal = std::numeric_limits<float>::denorm_min();
    volatile float result = 1.0F;
    {
        const flush_to_zero guard;
        { const flush_to_zero nested; }
        result = smallest * 0.5F;
        EXPECT_FALSE(denormal > 0.0F);
    }
    EXPECT_EQ(result, 0.0F) << "seen where a denormal counts";
}
#endif

} // namespace
