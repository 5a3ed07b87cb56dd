#include "voice/auto_eq.h"

#include "kit/allocation_counter.h"
#include "kit/compare.h"
#include "kit/signals.h"
#include "voice/auto_eq_tables.h"

#include <cmath>
#include <gmock/gmock.h>

namespace {

using namespace test_kit;
using samples = std::vector<float>;

samples through(quenlis_auto_EQ& equaliser, const samples& in, size_t block, float voice_probability) {
    samples out(in.size());
    for (size_t start = 0; start + block <= in.size(); start += block)
        equaliser.process(&in[start], &out[start], voice_probability, 124);
    return out;
}

TEST(Spline, RunsThroughItsKnotsAndReproducesParabolas) {
    hermite_spline spline(6);
    const std::vector<double> x = {2, 3, 5, 9, 10, 14};
    std::vector<double> y;
    for (const double v : x)
        y.push_back(v * v - 3 * v);
    spline.fit(x, y);
    samples curve(15);
    spline.evaluate(curve.data(), 15);
    for (const double v : x)
        EXPECT_NEAR(curve[static_cast<size_t>(v)], v * v - 3 * v, 1e-5);
    // Three-point differences have the exact slope of a parabola, away from the ends.
    for (const double v : {4.0, 6.0, 7.0, 8.0})
        EXPECT_NEAR(curve[static_cast<size_t>(v)], v * v - 3 * v, 1e-5);
}

TEST(AutoEqualiser, DelaysBy512AndIsNearlyFlatBeforeItHasLearnt) {
    for (const size_t block : {480U, 512U, 960U, 1024U}) {
        quenlis_auto_EQ equaliser(48000, 1, static_cast<int>(block));
        const samples in = noise(16 * block, 1, 0.1F);
        samples out(block);
        const allocation_counter heap;
        equaliser.process(in.data(), out.data(), 0.0F, 124);
        EXPECT_EQ(heap.allocations(), 0U);
        quenlis_auto_EQ fresh(48000, 1, static_cast<int>(block));
        const samples heard = through(fresh, in, block, 0.0F);
        EXPECT_EQ(find_delay(in, heard, 2000), 512U) << block;
        const double change = gain_db_at(in, heard, 1000.0);
        EXPECT_NEAR(change, 0.0, 1.5);
    }
}

TEST(AutoEqualiser, LearnsOnlyAboveTheThresholdAndWithoutAllocating) {
    quenlis_auto_EQ equaliser(48000, 2, 480);
    samples x = planar(noise(480, 2, 0.1F), noise(480, 3, 0.1F));
    const samples before(equaliser.measured_curve(), equaliser.measured_curve() + 1024);
    equaliser.process(x.data(), x.data(), 0.85F, 248);
    EXPECT_TRUE(same_bits(before, samples(equaliser.measured_curve(), equaliser.measured_curve() + 1024)));
    const allocation_counter heap;
    equaliser.process(x.data(), x.data(), 0.9F, 248);
    EXPECT_EQ(heap.allocations(), 0U);
    EXPECT_FALSE(same_bits(before, samples(equaliser.measured_curve(), equaliser.measured_curve() + 1024)));
    EXPECT_TRUE(same_bits(samples(x.begin(), x.begin() + 480), samples(x.begin() + 480, x.end())));
}

TEST(AutoEqualiser, MovesTheLowTargetWithThePitch) {
    quenlis_auto_EQ equaliser(48000, 1, 480);
    const float* const target = equaliser.target_curve();
    EXPECT_EQ(target[5], -16.0F);
    EXPECT_EQ(target[38], -33.0F);
    EXPECT_FLOAT_EQ(target[40], (target[38] + target[42]) / 2.0F);
    EXPECT_EQ(target[42], target_values[42]);
    EXPECT_EQ(target[700], target_values[700]);
    equaliser.update_pitch_estimate(248);
    EXPECT_EQ(equaliser.pitch_estimate(), 124) << "0.41 Hz more, cut";
    for (int i = 1; i < 300; ++i)
        equaliser.update_pitch_estimate(248);
    EXPECT_EQ(equaliser.pitch_estimate(), 248);
    equaliser.update_target_curve();
    EXPECT_EQ(target[10], -16.0F);
    EXPECT_EQ(target[42], -33.0F) << "node 7 falls on the last bin";
    for (int i = 0; i < 300; ++i)
        equaliser.update_pitch_estimate(124);
    equaliser.update_target_curve();
    EXPECT_EQ(target[42], -33.0F) << "and its value stays";
}

TEST(AutoEqualiser, BringsADullVoiceTowardsTheTargetAndKeepsItsLevel) {
    // A voice that falls by 12 dB an octave above 300 Hz: the target falls by far less.
    samples voice = noise(48000 * 12, 4);
    float first = 0.0F;
    float second = 0.0F;
    for (float& sample : voice) {
        first += 0.04F * (sample - first);
        second += 0.04F * (first - second);
        sample = second;
    }
    quenlis_auto_EQ equaliser(48000, 1, 480);
    const samples out = through(equaliser, voice, 480, 1.0F);
    const samples in_end(voice.end() - 96000, voice.end());
    const samples out_end(out.end() - 96000, out.end());
    double energy_in = 0;
    double energy_out = 0;
    for (size_t i = 0; i < in_end.size(); ++i) {
        energy_in += in_end[i] * in_end[i];
        energy_out += out_end[i] * out_end[i];
    }
    EXPECT_NEAR(10 * std::log10(energy_out / energy_in), 0.0, 1.0);
    const double tilt = gain_db_at(in_end, out_end, 4000.0) - gain_db_at(in_end, out_end, 300.0);
    EXPECT_GT(tilt, 6.0) << "the top is lifted against the bottom";
}

} // namespace
