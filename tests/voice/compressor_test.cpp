#include "voice/compressor.h"

#include "kit/allocation_counter.h"
#include "kit/compare.h"
#include "kit/signals.h"

#include <cmath>

namespace {

using namespace test_kit;
using samples = std::vector<float>;

constexpr int block = 480;

TEST(Compressor, FollowsItsThreeStepsSampleBySample) {
    quenlis_compressor compressor(48000, 2, block);
    const samples in = speech_like(60 * block, 5);
    double rms = 0;
    double curve = 0;
    samples expected;
    samples heard;
    for (size_t start = 0; start < in.size(); start += block) {
        samples x = planar(samples(&in[start], &in[start] + block), samples(block, 0.3F));
        const allocation_counter heap;
        compressor.process(x.data(), x.data());
        ASSERT_EQ(heap.allocations(), 0U);
        ASSERT_TRUE(same_bits(samples(x.begin(), x.begin() + block), samples(x.begin() + block, x.end())))
            << "the first channel is heard on both";
        heard.insert(heard.end(), x.begin(), x.begin() + block);
    }
    for (const float x : in) {
        const double level = 20.0 * std::log10(std::abs(static_cast<double>(x))) + 20.0;
        const double wanted = level > 4.5 ? 0.9 * (level - 4.5) : 0.0;
        rms = 0.995214 * rms + (1.0 - 0.995214) * wanted * wanted;
        const double r = std::sqrt(rms);
        curve = curve > r ? r : 0.99999 * r + 0.00001 * curve;
        expected.push_back(static_cast<float>(x * std::pow(10.0, -curve / 20.0)));
    }
    EXPECT_TRUE(error_below(expected, heard, -90.0)) << "the coefficient is given to six digits";
}

TEST(Compressor, HasAThresholdAndTenToOneAboveIt) {
    const auto settled = [](float level_db) {
        quenlis_compressor compressor(48000, 1, block);
        const float level = dB2lin(level_db);
        samples x;
        for (int i = 0; i < 50; ++i) {
            x.assign(block, level);
            compressor.process(x.data(), x.data());
        }
        return lin2dB(x.back());
    };
    EXPECT_NEAR(settled(-20.0F), -20.0F, 1e-4F);
    EXPECT_NEAR(settled(-15.6F), -15.6F, 1e-4F);
    EXPECT_NEAR(settled(-5.5F), -14.5F, 1e-3F) << "10 dB over the threshold become 1 dB";
}

TEST(Compressor, KeepsSilenceAndItsUnityGain) {
    quenlis_compressor compressor(48000, 1, block);
    samples x(block);
    compressor.process(x.data(), x.data());
    EXPECT_TRUE(same_bits(samples(block), x));
    x.assign(block, 0.1F);
    compressor.process(x.data(), x.data());
    EXPECT_TRUE(same_bits(samples(block, 0.1F), x));
}

} // namespace
