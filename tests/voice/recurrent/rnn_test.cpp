#include "voice/recurrent/rnn.h"

#include "kit/audio.h"
#include "kit/words.h"
#include "voice/recurrent/network.h"

namespace {

using namespace test_kit;

struct outcome {
    samples heard;
    samples voice;
    std::vector<int> pitch;
};

outcome listen(samples x) {
    quenlis_rnn denoiser(480, 1);
    outcome result;
    for (size_t start = 0; start < x.size(); start += 480) {
        result.voice.push_back(denoiser.process(&x[start], &x[start]));
        result.pitch.push_back(denoiser.get_pitch());
    }
    result.heard = x;
    return result;
}

/// A voice of constant pitch: pulses through a resonance.
samples vowel(double hz) {
    samples x(48000);
    for (size_t i = 2; i < x.size(); ++i) {
        const double period = static_cast<double>(i) * hz / 48000.0;
        const float pulse = period - std::floor(period) < hz / 48000.0 ? 0.2F : 0.0F;
        x[i] = pulse + 1.9F * x[i - 1] - 0.92F * x[i - 2];
    }
    return x;
}

TEST(RecurrentDenoiser, FindsThePitchOfVowels) {
    for (const double hz : {70.0, 110.0, 155.0, 222.0, 340.0}) {
        const outcome result = listen(vowel(hz));
        EXPECT_NEAR(result.pitch.back(), hz, 0.02 * hz + 1) << "a whole number of samples, cut to whole Hz";
    }
}

TEST(RecurrentDenoiser, TellsVoiceFromSilenceAtOnce) {
    samples x = vowel(140.0);
    std::fill(x.begin() + 24000, x.end(), 0.0F);
    const outcome result = listen(x);
    EXPECT_GT(*std::min_element(result.voice.begin() + 5, result.voice.begin() + 49), 0.85F);
    // The last block of voice rings on in the analysis window, the high-pass and the network's memory.
    EXPECT_THAT(samples(result.voice.begin() + 62, result.voice.end()), testing::Each(testing::Lt(0.025F)));
    EXPECT_THAT(result.pitch, testing::Each(testing::AllOf(testing::Ge(62), testing::Le(800))));
    EXPECT_THAT(listen(samples(48000)).voice, testing::Each(0.0F));
}

TEST(RecurrentDenoiser, KeepsSilentFramesWholeAndCutsActiveOnesAt20Kilohertz) {
    const samples faint = sine(48000, 21000.0, 2e-5F); // below the threshold of silence
    const samples loud = sine(48000, 21000.0, 0.02F);
    const auto gain_db = [](const samples& x) {
        return gain_db_at(part(x, 4800, 43200), part(listen(x).heard, 4800, 43200), 21000.0);
    };
    EXPECT_NEAR(gain_db(faint), 0.0, 0.1);
    EXPECT_LT(gain_db(sum(vowel(140.0), loud)), -40.0);
}

TEST(RecurrentDenoiser, HearsTheSameOnEveryTarget) {
    const samples voice = words(24000, 150.0, 4).samples;
    expect_same_bits_on_every_target([&] {
        const outcome result = listen(voice);
        return planar(result.voice, {result.pitch.begin(), result.pitch.end()});
    });
}

TEST(RecurrentDenoiser, CopiesTheFirstChannelOfItsInputAlsoWhenItOnlyListens) {
    quenlis_rnn denoiser(480, 2);
    const samples left = noise(480, 5);
    samples x = planar(left, noise(480, 6));
    samples scratch(960, 7.0F);
    denoiser.process(x.data(), scratch.data());
    EXPECT_TRUE(same_bits(planar(left, left), x)) << "otherwise untouched";
    EXPECT_THAT(part(scratch, 480, 960), testing::Each(7.0F))
        << "the second channel of a scratch block is left alone";
}

TEST(TableActivations, FollowTheFunctionsAndSaturate) {
    for (double x = -9.0; x < 9.0; x += 0.0137) {
        EXPECT_NEAR(tansig_approx(static_cast<float>(x)), std::tanh(x), 3e-6);
        EXPECT_NEAR(sigmoid_approx(static_cast<float>(x)), 1 / (1 + std::exp(-x)), 2e-6);
    }
    EXPECT_EQ(tansig_approx(8.0F), 1.0F);
    EXPECT_EQ(tansig_approx(-8.0F), -1.0F);
    EXPECT_EQ(tansig_approx(std::nanf("")), 1.0F);
    EXPECT_EQ(tansig_approx(-0.5F), -tansig_approx(0.5F));
}

TEST(RecurrentNetwork, RunsAGatedLayerAsDefined) {
    constexpr int n = 5;
    constexpr int inputs = 3;
    std::vector<std::int8_t> weights;
    for (int i = 0; i < (inputs + n + 1) * 3 * n; ++i)
        weights.push_back(static_cast<std::int8_t>(i * 37 % 251 - 125));
    const std::int8_t* const input_weights = weights.data();
    const std::int8_t* const recurrent_weights = input_weights + inputs * 3 * n;
    const std::int8_t* const bias = recurrent_weights + n * 3 * n;
    const rnn_gru_layer layer = {bias, input_weights, recurrent_weights, inputs, n, 2};
    // Evaluated in double precision, apart from the code.
    const std::pair<float, samples> steps[] = {{0.7F, {0.0F, 0.0F, 0.0105131F, 0.1858794F, 0.0F}},
                                               {-1.2F, {0.0F, 0.0F, 0.0072799F, 0.0877629F, 0.4468586F}},
                                               {0.0F, {0.0F, 0.0F, 0.0048440F, 0.0476847F, 0.3173161F}}};
    samples state(128);
    for (const auto& [level, expected] : steps) {
        const samples in = {level, 0.0F, 0.4F};
        compute_gru(layer, state.data(), in.data());
        EXPECT_THAT(part(state, 0, n), testing::Pointwise(testing::FloatNear(1e-5F), expected));
    }
}

} // namespace
