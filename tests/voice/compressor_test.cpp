#include "voice/compressor.h"

#include "kit/audio.h"

namespace {

using namespace test_kit;

constexpr int block = 480;

TEST(Compressor, TurnsBothChannelsDownAsFastAsTheLevelOfTheFirstIsMeasured) {
    constexpr size_t loud_frames = 5 * block;
    samples in(2 * loud_frames, 0.05F);
    std::fill_n(in.begin(), loud_frames, 0.5F);
    const double settled_db = 0.9 * (20.0 * std::log10(0.5) + 20.0 - 4.5);
    samples expected;
    for (size_t i = 0; i < in.size(); ++i) {
        const double share =
            i < loud_frames ? 1.0 - std::pow(0.995214, i + 1) : std::pow(0.995214, i + 1 - loud_frames);
        expected.push_back(static_cast<float>(in[i] * std::pow(10.0, -settled_db * std::sqrt(share) / 20.0)));
    }
    quenlis_compressor compressor(48000, 2, block);
    const stereo heard =
        in_planar_blocks({in, samples(in.size(), 0.3F)}, block, [&](float* x) { compressor.process(x, x); });
    EXPECT_TRUE(error_below(expected, heard.left, -90.0)) << "the coefficient is given to six digits";
    EXPECT_TRUE(same_bits(heard.left, heard.right));
}

TEST(Compressor, HasAThresholdAndTenToOneAboveIt) {
    const auto settled = [](float level_db) {
        quenlis_compressor compressor(48000, 1, block);
        samples x(100 * block, dB2lin(level_db));
        std::fill_n(x.begin(), block, 0.0F); // silence stays, and changes nothing
        x = in_blocks(x, block, [&](float* part) { compressor.process(part, part); });
        EXPECT_EQ(x[0], 0.0F);
        return lin2dB(x.back());
    };
    EXPECT_NEAR(settled(-15.6F), -15.6F, 1e-4F);
    EXPECT_NEAR(settled(-5.5F), -14.5F, 1e-3F) << "10 dB over the threshold become 1 dB";
}

} // namespace
