#include "voice/recurrent/rnn.h"

#include "kit/audio.h"
#include "kit/words.h"
#include "voice/recurrent/network.h"

#include <utility>

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

TEST(RecurrentNetwork, RunsItsLayersAsDefined) {
    std::vector<std::int8_t> weights;
    for (int i = 0; i < 4000; ++i)
        weights.push_back(static_cast<std::int8_t>(i * 37 % 251 - 125));
    const std::int8_t* next = weights.data();
    const auto take = [&](int count) { return std::exchange(next, next + count); };
    const auto dense = [&](int inputs, int n, int activation) {
        const std::int8_t* const from_inputs = take(inputs * n);
        return rnn_dense_layer{take(n), from_inputs, inputs, n, activation};
    };
    const auto gated = [&](int inputs, int n, int activation) {
        const std::int8_t* const from_inputs = take(inputs * 3 * n);
        const std::int8_t* const from_state = take(n * 3 * n);
        return rnn_gru_layer{take(3 * n), from_inputs, from_state, inputs, n, activation};
    };
    const rnn_dense_layer input_dense = dense(42, 2, 0);
    const rnn_gru_layer vad_gru = gated(2, 3, 0);
    const rnn_gru_layer noise_gru = gated(2 + 3 + 42, 4, 2);
    const rnn_gru_layer denoise_gru = gated(3 + 4 + 42, 5, 0);
    const rnn_dense_layer denoise_output = dense(5, 3, 1);
    const rnn_dense_layer vad_output = dense(3, 1, 1);
    const rnnoise_model model = {2, &input_dense, 3, &vad_gru,        4, &noise_gru,
                                 5, &denoise_gru, 3, &denoise_output, 1, &vad_output};
    // Voice and gains, evaluated in double precision, apart from the code.
    const samples steps[] = {{0.444650F, 0.537565F, 0.586240F, 0.633286F},
                             {0.459591F, 0.527625F, 0.573939F, 0.618990F},
                             {0.456050F, 0.471926F, 0.530781F, 0.588791F}};
    samples vad(128);
    samples noise(128);
    samples denoise(128);
    int step = 0;
    for (const samples& expected : steps) {
        samples features(128);
        for (int k = 0; k < 42; ++k)
            features[static_cast<size_t>(k)] = 0.05F * static_cast<float>((7 * k + 3 * step) % 11 - 5);
        ++step;
        samples found(1 + 128);
        found[0] = compute_rnn(model, {vad.data(), noise.data(), denoise.data()}, &found[1], features.data());
        EXPECT_THAT(part(found, 0, 4), testing::Pointwise(testing::FloatNear(1e-5F), expected));
    }
}

} // namespace
