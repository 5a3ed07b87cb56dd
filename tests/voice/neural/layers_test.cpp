#include "voice/neural/layers.h"

#include "kit/audio.h"

namespace {

using namespace test_kit;

constexpr size_t units = 128;
constexpr size_t gates = 4 * units;

double sigmoid(double x) {
    return 1.0 / (1.0 + std::exp(-x));
}

/// One step of the cells in double precision.
void step(const samples& bias, const samples& kernel, const samples& recurrent, const samples& in,
          std::vector<double>& h, std::vector<double>& c) {
    std::vector<double> sum(bias.begin(), bias.end());
    for (size_t j = 0; j < gates; ++j) {
        for (size_t i = 0; i < in.size(); ++i)
            sum[j] += static_cast<double>(in[i]) * kernel[i * gates + j];
        for (size_t i = 0; i < units; ++i)
            sum[j] += h[i] * recurrent[i * gates + j];
    }
    for (size_t j = 0; j < units; ++j) {
        c[j] = sigmoid(sum[units + j]) * c[j] + sigmoid(sum[j]) * std::tanh(sum[2 * units + j]);
        h[j] = sigmoid(sum[3 * units + j]) * std::tanh(c[j]);
    }
}

TEST(LstmLayer, KeepsItsCellsAsDefinedWithFramesTogetherOrOneByOneAndInPlace) {
    constexpr size_t frames = 4;
    const samples bias = noise(gates, 1);
    const samples kernel = noise(units * gates, 2, 0.2F);
    const samples recurrent = noise(units * gates, 3, 0.2F);
    for (const size_t inputs : {size_t{37}, units}) {
        const samples in = noise(frames * inputs, 4);
        const auto layer = [&] {
            return qnl_nn_lstm_layer(bias.data(), kernel.data(), recurrent.data(), static_cast<int>(inputs),
                                     units);
        };
        qnl_nn_lstm_layer together = layer();
        qnl_nn_lstm_layer one_by_one = layer();
        samples out(frames * units);
        expect_no_allocation([&] { together.process(in.data(), out.data(), frames); });
        samples expected;
        std::vector<double> h(units);
        std::vector<double> c(units);
        for (size_t frame = 0; frame < frames; ++frame) {
            const samples now = part(in, frame * inputs, (frame + 1) * inputs);
            samples single = now;
            single.resize(units);
            one_by_one.process(single.data(), single.data());
            EXPECT_TRUE(same_bits(part(out, frame * units, (frame + 1) * units), single));
            step(bias, kernel, recurrent, now, h, c);
            expected.insert(expected.end(), h.begin(), h.end());
        }
        EXPECT_TRUE(error_below(expected, out, -110.0)) << "single precision of some 160 products";
    }
}

TEST(OtherLayers, TreatSilenceConstantsAndExtremesAsPromised) {
    const samples weights = noise(8 * 5, 7);
    const samples bias = noise(5, 8);
    const samples silence(16);
    samples out(10, 3.0F);
    qnl_nn_dense_layer(bias.data(), weights.data(), 8, 5).process(silence.data(), out.data(), 2);
    EXPECT_TRUE(same_bits(planar(bias, bias), out));
    qnl_nn_conv1d_layer(weights.data(), 8, 5).process(silence.data(), out.data(), 2);
    EXPECT_TRUE(same_bits(planar(bias, bias), out)) << "adds to what is there";

    const samples gamma = noise(256, 9);
    const samples beta = noise(256, 10);
    const samples varied = sine(256, 750.0, 20.0F); // four periods: mean 0, variance 200
    samples x = planar(samples(256, 7.0F), varied);
    qnl_nn_instant_norm_layer(gamma.data(), beta.data()).process(x.data(), x.data(), 2);
    EXPECT_TRUE(same_bits(beta, part(x, 0, 256))) << "a constant has nothing but the offset";
    samples expected;
    for (size_t i = 0; i < 256; ++i)
        expected.push_back(varied[i] / std::sqrt(200.0F) * gamma[i] + beta[i]);
    EXPECT_TRUE(error_below(expected, part(x, 256, 512), -110.0));

    samples s = {-200.0F, 0.0F, 200.0F, 1.0F};
    qnl_nn_helpers::sigmoid(s.data(), s.data(), 4);
    EXPECT_THAT(s, testing::ElementsAre(0.0F, 0.5F, 1.0F, 1.0F / (1.0F + std::exp(-1.0F))));
    samples kept = bias;
    qnl_nn_helpers::dot_product(silence.data(), 8, kept.data(), 5, nullptr, weights.data(), nullptr);
    EXPECT_TRUE(same_bits(bias, kept));
}

} // namespace
