#include "voice/limiter.h"

#include "kit/allocation_counter.h"
#include "kit/compare.h"
#include "kit/signals.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <limits>

namespace {

using namespace test_kit;
using samples = std::vector<float>;

constexpr int block = 480;
constexpr size_t latency = 9;
constexpr float ceiling = 0.977237F;

/// A participant's limiter and what it made of all it was given.
struct run {
    quenlis_limiter limiter{-0.2F, 0.2F, 48000, 2, block};
    samples left;
    samples right;

    void feed(const samples& left_in, const samples& right_in) {
        for (size_t start = 0; start < left_in.size(); start += block) {
            samples x(2 * block);
            std::copy_n(left_in.begin() + static_cast<std::ptrdiff_t>(start), block, x.begin());
            std::copy_n(right_in.begin() + static_cast<std::ptrdiff_t>(start), block, x.begin() + block);
            limiter.process(x.data(), x.data());
            left.insert(left.end(), x.begin(), x.begin() + block);
            right.insert(right.end(), x.begin() + block, x.end());
        }
    }
};

samples late(const samples& x) {
    samples y(latency);
    y.insert(y.end(), x.begin(), x.end() - latency);
    return y;
}

TEST(Limiter, LeavesWhatIsBelowTheCeilingAsItIsNineFramesLate) {
    run quiet;
    const samples left = noise(4 * block, 1, 0.97F);
    const samples right = noise(4 * block, 2, 0.97F);
    samples silence(2 * block);
    const allocation_counter heap;
    quiet.limiter.process(silence.data(), silence.data());
    EXPECT_EQ(heap.allocations(), 0U);
    quiet.feed(left, right);
    EXPECT_TRUE(same_bits(late(left), quiet.left));
    EXPECT_TRUE(same_bits(late(right), quiet.right));
}

TEST(Limiter, FollowsItsRecursionSampleBySample) {
    run loud;
    const samples left = speech_like(20 * block, 3);
    samples right = noise(20 * block, 4, 3.0F);
    std::fill(right.begin() + 2000, right.begin() + 5000, 0.0F);
    loud.feed(left, right);
    float held = ceiling;
    float envelope = ceiling;
    size_t held_for = 0;
    samples expected(right.size());
    for (size_t i = 0; i < right.size(); ++i) {
        const float target = std::max({ceiling, std::abs(left[i]), std::abs(right[i])});
        if (++held_for == latency || target > held) {
            held = target;
            held_for = 0;
        }
        envelope = held + (envelope - held) * (held > envelope ? 0.618966F : 0.990452F);
        expected[i] = (i < latency ? 0.0F : right[i - latency]) * ceiling / envelope;
    }
    EXPECT_TRUE(error_below(expected, loud.right, -100.0)) << "the constants are given to six digits";
}

TEST(Limiter, HoldsTheCeilingAndTurnsBothSidesDownTogether) {
    run constant;
    constant.feed(samples(10 * block, -1.0F), samples(10 * block, 0.1F));
    EXPECT_NEAR(constant.left.back(), -ceiling, 1e-6F);
    EXPECT_NEAR(constant.right.back(), 0.1F * ceiling, 1e-7F);
}

TEST(Limiter, RecoversFromSamplesThatAreNoNumbers) {
    for (const float wild :
         {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
        run struck;
        struck.feed(samples(block, 0.5F), impulse(block, 100, wild));
        EXPECT_FALSE(std::isfinite(struck.right[100 + latency])) << "the sample itself leaves as it came";
        EXPECT_LT(struck.left[200], 1e-15F);
        struck.feed(samples(120 * block, 0.5F), samples(120 * block, 0.5F));
        EXPECT_NEAR(struck.left.back(), 0.5F, 1e-5F) << "as near as single precision lets the release come";
    }
}

TEST(Limiter, OfOneChannelReadsAStereoBlockAndWritesTheLeftHalf) {
    quenlis_limiter mono(-0.2F, 0.2F, 48000, 1, block);
    const samples x = planar(samples(block, 0.5F), samples(block, 100.0F));
    samples out(2 * block, -7.0F);
    mono.process(x.data(), out.data());
    EXPECT_EQ(out[block - 1], 0.5F) << "the right half counts for nothing";
    EXPECT_THAT(samples(out.begin() + block, out.end()), testing::Each(-7.0F));
}

} // namespace
