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

outcome listen(const samples& in, size_t block = 480) {
    quenlis_rnn denoiser(static_cast<int>(block), 1);
    outcome result;
    result.heard = in;
    for (size_t start = 0; start + block <= in.size(); start += block) {
        result.voice.push_back(denoiser.process(&result.heard[start], &result.heard[start]));
        result.pitch.push_back(denoiser.get_pitch());
    }
    return result;
}

/// A voice of constant pitch: pulses through a resonance.
samples vowel(size_t frames, double hz) {
    samples x(frames);
    double phase = 0;
    float y1 = 0;
    float y2 = 0;
    for (float& sample : x) {
        phase += hz / 48000;
        const float pulse = phase >= 1 ? 0.2F : 0.0F;
        phase -= std::floor(phase);
        const float y = pulse + 1.9F * y1 - 0.92F * y2;
        y2 = y1;
        y1 = y;
        sample = y;
    }
    return x;
}

TEST(RecurrentDenoiser, FindsThePitchOfVowels) {
    for (const double hz : {70.0, 110.0, 155.0, 222.0, 340.0}) {
        const outcome result = listen(vowel(48000, hz));
        EXPECT_NEAR(result.pitch.back(), hz, 0.02 * hz + 1) << "a whole number of samples, cut to whole Hz";
    }
}

TEST(RecurrentDenoiser, TellsVoiceFromSilenceAtOnce) {
    samples x = vowel(48000, 140.0);
    std::fill(x.begin() + 24000, x.end(), 0.0F);
    const outcome result = listen(x);
    EXPECT_GT(*std::min_element(result.voice.begin() + 5, result.voice.begin() + 49), 0.85F);
    // The last block of voice rings on in the analysis window, the high-pass and the network's memory.
    EXPECT_THAT(samples(result.voice.begin() + 62, result.voice.end()), testing::Each(testing::Lt(0.025F)));
    EXPECT_THAT(result.pitch, testing::Each(testing::AllOf(testing::Ge(62), testing::Le(800))));
    EXPECT_THAT(listen(samples(48000)).voice, testing::Each(0.0F));
}

TEST(RecurrentDenoiser, IsLateByItsLatencyInEveryBlockLength) {
    const samples voice = words(48000, 115.0, 3).samples;
    for (const auto& [block, latency] :
         {std::pair<size_t, double>{480, 480}, {960, 480}, {512, 992}, {1024, 1504}}) {
        const outcome result = listen(voice, block);
        // The gains colour the voice, which can move its best match by a sample.
        EXPECT_NEAR(static_cast<double>(find_delay(voice, result.heard, 3000).value_or(0)), latency, 1.0)
            << block;
        if (block == 512 || block == 1024) {
            EXPECT_TRUE(same_bits(part(voice, 0, block), part(result.heard, 0, block)))
                << "the first block passes dry";
        }
    }
    EXPECT_TRUE(same_bits(listen(voice, 480).heard, listen(voice, 960).heard));
}

TEST(RecurrentDenoiser, KeepsSilentFramesWholeAndCutsActiveOnesAt20Kilohertz) {
    const samples faint = sine(48000, 21000.0, 2e-5F); // below the threshold of silence
    const samples loud = sine(48000, 21000.0, 0.2F);
    EXPECT_NEAR(gain_db_at(part(faint, 4800, 43200), part(listen(faint).heard, 4800, 43200), 21000.0), 0.0,
                0.1);
    samples with_voice = vowel(48000, 140.0);
    for (size_t i = 0; i < loud.size(); ++i)
        with_voice[i] += 0.1F * loud[i];
    EXPECT_LT(gain_db_at(part(with_voice, 4800, 43200), part(listen(with_voice).heard, 4800, 43200), 21000.0),
              -40.0);
}

TEST(RecurrentDenoiser, NeitherAllocatesNorDependsOnTheInstructionSet) {
    const samples voice = words(24000, 150.0, 4).samples;
    expect_same_bits_on_every_target([&] {
        const outcome result = listen(voice);
        return planar(planar(result.heard, result.voice), {result.pitch.begin(), result.pitch.end()});
    });
    quenlis_rnn denoiser(1024, 2);
    samples x = planar(part(voice, 0, 1024), part(voice, 5000, 6024));
    samples out(2048, 9.0F);
    expect_no_allocation([&] { denoiser.process(x.data(), out.data()); });
    EXPECT_TRUE(same_bits(part(x, 0, 1024), part(x, 1024, 2048)));
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
    struct {
        float level;
        samples state;
    } const steps[] = {{0.7F, {0.0F, 0.0F, 0.0105131F, 0.1858794F, 0.0F}},
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
