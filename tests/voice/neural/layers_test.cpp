#include "voice/neural/layers.h"

#include "kit/audio.h"

namespace {

using namespace test_kit;

TEST(LstmLayer, KeepsItsCellsAsDefinedWithFramesTogetherOrOneByOneAndInPlace) {
    constexpr size_t units = 128;
    constexpr size_t frames = 4;
    const samples bias = noise(4 * units, 1);
    const samples kernel = noise(units * 4 * units, 2, 0.2F);
    const samples recurrent = noise(units * 4 * units, 3, 0.2F);
    // Evaluated in double precision, apart from the code. Every unit acts on all of the next frame.
    const std::pair<size_t, samples> units_0_31_77_and_127_at_the_end[] = {
        {37, {-0.1055431F, 0.2000901F, -0.1093256F, 0.1245139F}},
        {units, {0.0387243F, 0.4365293F, -0.1158628F, 0.0853988F}}};
    for (const auto& [inputs, expected] : units_0_31_77_and_127_at_the_end) {
        const auto layer = [&, size = static_cast<int>(inputs)] {
            return qnl_nn_lstm_layer(bias.data(), kernel.data(), recurrent.data(), size, units);
        };
        qnl_nn_lstm_layer together = layer();
        qnl_nn_lstm_layer one_by_one = layer();
        const samples in = noise(frames * inputs, 4);
        samples out(frames * units);
        expect_no_allocation([&] { together.process(in.data(), out.data(), frames); });
        samples single;
        for (size_t frame = 0; frame < frames; ++frame) {
            single = part(in, frame * inputs, (frame + 1) * inputs);
            single.resize(units);
            one_by_one.process(single.data(), single.data());
            EXPECT_TRUE(same_bits(part(out, frame * units, (frame + 1) * units), single));
        }
        EXPECT_THAT((samples{single[0], single[31], single[77], single[127]}),
                    testing::Pointwise(testing::FloatNear(2e-6F), expected));
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
