#include "voice/deesser.h"

#include "kit/allocation_counter.h"
#include "kit/compare.h"
#include "kit/signals.h"

#include <cmath>
#include <gmock/gmock.h>
#include <limits>

namespace {

using namespace test_kit;
using samples = std::vector<float>;

constexpr size_t block = 480;

samples through(quenlis_deesser& deesser, const samples& in) {
    samples out(in.size());
    deesser.process(in.data(), out.data());
    return out;
}

TEST(Deesser, LeavesSilenceConstantsAndLowTonesAlone) {
    quenlis_deesser deesser(48000, 1, block);
    EXPECT_THAT(through(deesser, samples(block)), testing::Each(0.0F));
    quenlis_deesser constant(48000, 1, block);
    through(constant, samples(block, 0.5F)); // the step at the start is sibilance
    for (int i = 0; i < 400; ++i)
        through(constant, samples(block, 0.5F));
    EXPECT_TRUE(error_below(samples(block, 0.5F), through(constant, samples(block, 0.5F)), -120.0));
    quenlis_deesser low(48000, 1, 48000);
    const samples tone = sine(48000, 200.0, 0.3F);
    EXPECT_TRUE(error_below(tone, through(low, tone), -60.0));
}

TEST(Deesser, TurnsHissDownAndNeverByMoreThan24Decibels) {
    quenlis_deesser deesser(48000, 1, 48000);
    const samples hiss = sine(48000, 9000.0, 0.5F);
    const double gain = gain_db_at(hiss, through(deesser, hiss), 9000.0);
    EXPECT_LT(gain, -6.0);
    EXPECT_GT(gain, -24.1);
}

/// The recursion as it is defined, for one channel.
samples by_definition(const samples& in) {
    const double overall = 48000 * 2.2675736961451248e-5;
    const double intensity = 8192 / overall * 0.03125;
    double s1 = 0, s2 = 0, s3 = 0;
    double ratio[2] = {1, 1};
    double smooth[2] = {0, 0};
    samples out;
    for (size_t i = 0; i < in.size(); ++i) {
        s3 = s2;
        s2 = s1;
        s1 = in[i];
        const double m1 = (s1 - s2) * (s1 - s2) / 1.3;
        const double m2 = (s2 - s3) * (s1 - s2) / 1.3;
        const double raw = std::abs((m1 - m2) / 1.3 * (m1 - m2));
        const double sense = std::min(intensity, raw * intensity * intensity + 1);
        double& r = ratio[i % 2]; // the pair that goes second comes first
        double& s = smooth[i % 2];
        const double c = (1 - std::abs(in[i])) * 0.25 / overall;
        s = in[i] * c + (1 - c) * s;
        r = sense > r ? (sense + r * (raw * 1024 + 7)) / (raw * 1024 + 8) : (r - 1) / (0.01 / sense + 1) + 1;
        r = std::min(r, 15.848931924611133);
        out.push_back(static_cast<float>(s + (in[i] - s) / r));
    }
    return out;
}

TEST(Deesser, FollowsItsRecursionOnBothChannelsInBlocksOfAnyLength) {
    const samples left = noise(2 * block, 1, 1.5F);
    const samples right = speech_like(2 * block, 2);
    quenlis_deesser whole(48000, 2, 2 * block);
    quenlis_deesser halves(48000, 2, block);
    samples out = planar(left, right);
    const allocation_counter heap;
    whole.process(out.data(), out.data());
    EXPECT_EQ(heap.allocations(), 0U);
    EXPECT_TRUE(error_below(planar(by_definition(left), by_definition(right)), out, -130.0));
    for (size_t start : {size_t{0}, block}) {
        const auto from = static_cast<std::ptrdiff_t>(start);
        samples half = planar(samples(left.begin() + from, left.begin() + from + block),
                              samples(right.begin() + from, right.begin() + from + block));
        halves.process(half.data(), half.data());
        EXPECT_TRUE(same_bits(samples(out.begin() + from, out.begin() + from + block),
                              samples(half.begin(), half.begin() + block)));
    }
}

TEST(Deesser, OfOneChannelTouchesOneBlock) {
    quenlis_deesser mono(48000, 1, 16);
    samples out(32, 7.0F);
    mono.process(samples(32, 0.1F).data(), out.data());
    EXPECT_THAT(samples(out.begin() + 16, out.end()), testing::Each(7.0F));
    quenlis_deesser none(48000, 2, 0);
    none.process(nullptr, nullptr);
}

} // namespace
