#include "voice/auto_eq.h"

#include "kit/audio.h"
#include "voice/auto_eq_tables.h"

namespace {

using namespace test_kit;

samples through(quenlis_auto_EQ& equaliser, const samples& in, size_t block, float voice_probability) {
    return in_blocks(in, block, [&](float* x) { equaliser.process(x, x, voice_probability, 124); });
}

TEST(Spline, RunsThroughItsKnotsAndReproducesParabolas) {
    const auto parabola = [](double v) { return v * v - 3 * v; };
    hermite_spline spline(6);
    const std::vector<double> x = {2, 3, 5, 9, 10, 14};
    std::vector<double> y(x.size());
    std::transform(x.begin(), x.end(), y.begin(), parabola);
    spline.fit(x, y);
    samples curve(15);
    spline.evaluate(curve.data(), 15);
    // Three-point differences have the exact slope of a parabola, away from the ends.
    for (const size_t v : {2, 3, 5, 9, 10, 14, 4, 6, 7, 8})
        EXPECT_NEAR(curve[v], parabola(static_cast<double>(v)), 1e-5);
}

TEST(AutoEqualiser, DelaysBy512AndIsNearlyFlatBeforeItHasLearnt) {
    for (const size_t block : {480U, 512U, 960U, 1024U}) {
        quenlis_auto_EQ equaliser(48000, 1, static_cast<int>(block));
        const samples in = noise(16 * block, 1, 0.1F);
        const samples heard = through(equaliser, in, block, 0.0F);
        EXPECT_EQ(find_delay(in, heard, 2000), 512U) << block;
        EXPECT_NEAR(gain_db_at(in, heard, 1000.0), 0.0, 1.5);
    }
}

TEST(AutoEqualiser, LearnsOnlyAboveTheThreshold) {
    quenlis_auto_EQ equaliser(48000, 2, 480);
    const auto curve = [&] { return samples(equaliser.measured_curve(), equaliser.measured_curve() + 1024); };
    const auto hear = [&](float voice_probability) {
        return in_planar_blocks({noise(480, 2, 0.1F), noise(480, 3, 0.1F)}, 480,
                                [&](float* x) { equaliser.process(x, x, voice_probability, 248); });
    };
    const samples before = curve();
    hear(0.85F);
    EXPECT_TRUE(same_bits(before, curve()));
    const stereo heard = hear(0.9F);
    EXPECT_FALSE(same_bits(before, curve()));
    EXPECT_TRUE(same_bits(heard.left, heard.right));
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
    const auto settle = [&](int pitch) {
        for (int i = 0; i < 300; ++i)
            equaliser.update_pitch_estimate(pitch);
        equaliser.update_target_curve();
        return equaliser.pitch_estimate();
    };
    EXPECT_EQ(settle(248), 248);
    EXPECT_EQ(target[10], -16.0F);
    EXPECT_EQ(target[42], -33.0F) << "node 7 falls on the last bin";
    settle(124);
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
    const samples out = part(through(equaliser, voice, 480, 1.0F), voice.size() - 96000, voice.size());
    const samples in = part(voice, voice.size() - 96000, voice.size());
    EXPECT_NEAR(10 * std::log10(power(out) / power(in)), 0.0, 1.0);
    EXPECT_GT(gain_db_at(in, out, 4000.0) - gain_db_at(in, out, 300.0), 6.0)
        << "the top is lifted against the bottom";
}

} // namespace
