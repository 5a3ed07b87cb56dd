#include "voice/neural/layers.h"

#include "kit/allocation_counter.h"
#include "kit/compare.h"
#include "kit/signals.h"

#include <cmath>
#include <gmock/gmock.h>

namespace {

using namespace test_kit;
using samples = std::vector<float>;

constexpr size_t units = 128;
constexpr size_t gates = 4 * units;

double sigmoid(double x) {
    return 1.0 / (1.0 + std::exp(-x));
}

/// One step of the cells in double precision.
void step(const samples& bias, const samples& kernel, const samples& recurrent, const float* in,
          size_t inputs, std::vector<double>& h, std::vector<double>& c) {
    std::vector<double> sum(bias.begin(), bias.end());
    for (size_t j = 0; j < gates; ++j) {
        for (size_t i = 0; i < inputs; ++i)
            sum[j] += static_cast<double>(in[i]) * kernel[i * gates + j];
        for (size_t i = 0; i < units; ++i)
            sum[j] += h[i] * recurrent[i * gates + j];
    }
    for (size_t j = 0; j < units; ++j) {
        c[j] = sigmoid(sum[units + j]) * c[j] + sigmoid(sum[j]) * std::tanh(sum[2 * units + j]);
        h[j] = sigmoid(sum[3 * units + j]) * std::tanh(c[j]);
    }
}

TEST(LstmLayer, KeepsItsCellsAsDefinedWithFramesTogetherOrOneByOne) {
    constexpr size_t inputs = 37;
    constexpr size_t frames = 4;
    const samples bias = noise(gates, 1);
    const samples kernel = noise(inputs * gates, 2, 0.3F);
    const samples recurrent = noise(units * gates, 3, 0.2F);
    const samples in = noise(frames * inputs, 4);
    qnl_nn_lstm_layer together(bias.data(), kernel.data(), recurrent.data(), inputs, units);
    qnl_nn_lstm_layer one_by_one(bias.data(), kernel.data(), recurrent.data(), inputs, units);
    samples out(frames * units);
    samples single(frames * units);
    const allocation_counter heap;
    together.process(in.data(), out.data(), frames);
    for (size_t frame = 0; frame < frames; ++frame)
        one_by_one.process(&in[frame * inputs], &single[frame * units]);
    EXPECT_EQ(heap.allocations(), 0U);
    EXPECT_TRUE(same_bits(single, out));

    std::vector<double> h(units);
    std::vector<double> c(units);
    samples expected;
    for (size_t frame = 0; frame < frames; ++frame) {
        step(bias, kernel, recurrent, &in[frame * inputs], inputs, h, c);
        expected.insert(expected.end(), h.begin(), h.end());
    }
    EXPECT_TRUE(error_below(expected, out, -110.0)) << "single precision of some 160 products";
}

TEST(LstmLayer, MayWorkInPlace) {
    const samples bias(gates, 0.1F);
    const samples kernel = noise(units * gates, 5, 0.3F);
    qnl_nn_lstm_layer apart(bias.data(), kernel.data(), kernel.data(), units, units);
    qnl_nn_lstm_layer in_place(bias.data(), kernel.data(), kernel.data(), units, units);
    samples x = noise(2 * units, 6);
    samples out(2 * units);
    apart.process(x.data(), out.data(), 2);
    in_place.process(x.data(), x.data(), 2);
    EXPECT_TRUE(same_bits(out, x));
}

TEST(OtherLayers, TreatSilenceConstantsAndExtremesAsPromised) {
    const samples weights = noise(8 * 5, 7);
    const samples bias = noise(5, 8);
    const samples silence(16);
    samples out(10, 3.0F);
    qnl_nn_dense_layer(bias.data(), weights.data(), 8, 5).process(silence.data(), out.data(), 2);
    EXPECT_TRUE(same_bits(bias, samples(out.begin() + 5, out.end())));
    qnl_nn_conv1d_layer(weights.data(), 8, 5).process(silence.data(), out.data(), 2);
    EXPECT_TRUE(same_bits(bias, samples(out.begin(), out.begin() + 5))) << "adds to what is there";

    const samples gamma = noise(256, 9);
    const samples beta = noise(256, 10);
    qnl_nn_instant_norm_layer norm(gamma.data(), beta.data());
    samples x(512, 7.0F);
    const samples varied = noise(256, 11, 20.0F);
    std::copy(varied.begin(), varied.end(), x.begin() + 256);
    norm.process(x.data(), x.data(), 2);
    EXPECT_TRUE(same_bits(beta, samples(x.begin(), x.begin() + 256)))
        << "a constant has nothing but the offset";
    double mean = 0;
    double square = 0;
    for (const float value : varied)
        mean += value / 256.0;
    for (const float value : varied)
        square += (value - mean) * (value - mean) / 256.0;
    samples expected;
    for (size_t i = 0; i < 256; ++i)
        expected.push_back(static_cast<float>((varied[i] - mean) / std::sqrt(square) * gamma[i] + beta[i]));
    EXPECT_TRUE(error_below(expected, samples(x.begin() + 256, x.end()), -115.0));

    samples s = {-200.0F, 0.0F, 200.0F, 1.0F};
    qnl_nn_helpers::sigmoid(s.data(), s.data(), 4);
    EXPECT_THAT(s, testing::ElementsAre(0.0F, 0.5F, 1.0F, 1.0F / (1.0F + std::exp(-1.0F))));
    samples kept = bias;
    qnl_nn_helpers::dot_product(silence.data(), 8, kept.data(), 5, nullptr, weights.data(), nullptr);
    EXPECT_TRUE(same_bits(bias, kept));
}

} // namespace
