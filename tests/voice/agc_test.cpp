#include "voice/agc.h"

#include "kit/allocation_counter.h"
#include "kit/compare.h"
#include "kit/signals.h"

#include <cmath>

namespace {

using namespace test_kit;
using samples = std::vector<float>;

/// Runs a mono signal through a gain control in blocks.
samples through(quenlis_agc& agc, samples x, size_t block, float voice_probability) {
    for (size_t start = 0; start + block <= x.size(); start += block)
        agc.process(&x[start], voice_probability);
    return x;
}

/// Gain in dB that a talker of 3 kHz at `level_db` gets after `seconds` of speech.
double settled_gain(double level_db, size_t seconds, float voice_probability = 1.0F) {
    quenlis_agc agc(1, 480);
    const samples tone =
        sine(48000 * seconds, 3000.0, static_cast<float>(std::sqrt(2.0) * std::pow(10.0, level_db / 20.0)));
    const samples out = through(agc, tone, 480, voice_probability);
    const auto last_second = [](const samples& x) { return samples(x.end() - 48000, x.end()); };
    return gain_db_at(last_second(tone), last_second(out), 3000.0);
}

TEST(GainControl, IsADelayOfTwoAndAHalfFramesWhereNothingIsToBeDone) {
    for (const auto& [block, latency] :
         {std::pair<size_t, size_t>{480, 600}, {960, 600}, {512, 640}, {1024, 640}}) {
        quenlis_agc agc(2, static_cast<int>(block));
        const samples in = noise(8 * block, 1, 0.05F); // quiet, so the compressor sleeps
        samples heard;
        for (size_t start = 0; start < in.size(); start += block) {
            samples x(&in[start], &in[start] + block);
            x.resize(2 * block, 0.3F);
            const allocation_counter heap;
            agc.process(x.data(), 0.5F);
            EXPECT_EQ(heap.allocations(), 0U);
            ASSERT_TRUE(same_bits(samples(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(block)),
                                  samples(x.begin() + static_cast<std::ptrdiff_t>(block), x.end())));
            heard.insert(heard.end(), x.begin(), x.begin() + static_cast<std::ptrdiff_t>(block));
        }
        // Symmetric Hann windows add up to 1 within the reciprocal of their length.
        const auto compared = static_cast<std::ptrdiff_t>(heard.size() - 2 * latency);
        EXPECT_TRUE(error_below(samples(in.begin() + static_cast<std::ptrdiff_t>(latency),
                                        in.begin() + static_cast<std::ptrdiff_t>(latency) + compared),
                                samples(heard.begin() + static_cast<std::ptrdiff_t>(2 * latency),
                                        heard.begin() + static_cast<std::ptrdiff_t>(2 * latency) + compared),
                                -38.0))
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
    const samples speech = through(agc, tone, 480, 1.0F);
    const samples held = through(agc, tone, 480, 0.5F);
    const samples pause = through(agc, tone, 480, 0.0F);
    const auto peak_of_last_block = [](const samples& x) { return peak(samples(x.end() - 480, x.end())); };
    EXPECT_GT(peak_of_last_block(speech), 0.015F);
    EXPECT_NEAR(peak_of_last_block(held), peak_of_last_block(speech), 1e-3F);
    EXPECT_NEAR(peak_of_last_block(pause), 0.01F, 1e-4F);
    const samples again = through(agc, samples(tone.begin(), tone.begin() + 4800), 480, 1.0F);
    EXPECT_NEAR(peak(again), 0.01F, 2e-3F) << "the estimate of a quiet talker was forgotten";
}

} // namespace
