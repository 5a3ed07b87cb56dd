#include "voice/agc.h"

#include "kit/audio.h"

namespace {

using namespace test_kit;

/// Runs a mono signal through a gain control.
samples through(quenlis_agc& agc, const samples& x, float voice_probability) {
    return in_blocks(x, 480, [&](float* block) { agc.process(block, voice_probability); });
}

/// Gain in dB that a talker of 3 kHz at `level_db` gets after `seconds` of speech.
double settled_gain(double level_db, size_t seconds) {
    quenlis_agc agc(1, 480);
    const size_t frames = 48000 * seconds;
    const samples tone =
        sine(frames, 3000.0, static_cast<float>(std::sqrt(2.0) * std::pow(10.0, level_db / 20.0)));
    const samples out = through(agc, tone, 1.0F);
    return gain_db_at(part(tone, frames - 48000, frames), part(out, frames - 48000, frames), 3000.0);
}

TEST(GainControl, IsADelayOfTwoAndAHalfFramesWhereNothingIsToBeDone) {
    for (const auto& [block, latency] :
         {std::pair<size_t, size_t>{480, 600}, {960, 600}, {512, 640}, {1024, 640}}) {
        quenlis_agc agc(2, static_cast<int>(block));
        const samples in = noise(8 * block, 1, 0.05F); // quiet, so the compressor sleeps
        const auto [left, right] =
            in_planar_blocks({in, samples(in.size(), 0.3F)}, block, [&](float* x) { agc.process(x, 0.5F); });
        EXPECT_TRUE(same_bits(left, right)) << block;
        // Symmetric Hann windows add up to 1 within the reciprocal of their length.
        EXPECT_TRUE(
            error_below(part(in, latency, in.size() - latency), part(left, 2 * latency, in.size()), -38.0))
            << block;
    }
}

TEST(GainControl, BringsTalkersToTheNearerEdgeOfTheTargetBand) {
    const double quiet = settled_gain(-40.0, 20);
    const double louder = settled_gain(-34.0, 20);
    const double loud = settled_gain(-15.0, 20);
    EXPECT_NEAR(quiet - louder, 6.0, 0.2) << "the same level for all";
    EXPECT_NEAR(louder - loud, 19.0 - 2.0, 0.3)
        << "quiet ones end at the lower edge, loud ones at the upper, 2 dB apart";
    EXPECT_NEAR(settled_gain(-90.0, 1), 0.0, 3.0) << "what is far below the estimate hardly moves it";
}

TEST(GainControl, GivesTheGainBackInAPause) {
    quenlis_agc agc(1, 480);
    const samples tone = sine(48000 * 20, 1000.0, 0.01F);
    const auto peak_at_the_end = [&](float voice_probability) {
        const samples heard = through(agc, tone, voice_probability);
        return peak(part(heard, heard.size() - 480, heard.size()));
    };
    const float of_speech = peak_at_the_end(1.0F);
    EXPECT_GT(of_speech, 0.015F);
    EXPECT_NEAR(peak_at_the_end(0.5F), of_speech, 1e-3F) << "held";
    EXPECT_NEAR(peak_at_the_end(0.0F), 0.01F, 1e-4F);
    EXPECT_NEAR(peak(through(agc, part(tone, 0, 4800), 1.0F)), 0.01F, 2e-3F)
        << "the estimate of a quiet talker was forgotten";
}

} // namespace
