#include "voice/limiter.h"

#include "kit/audio.h"

namespace {

using namespace test_kit;

constexpr int block = 480;
constexpr size_t latency = 9;
constexpr float ceiling = 0.977237F;

/// The limiter of a participant.
struct participants_limiter : quenlis_limiter {
    participants_limiter() : quenlis_limiter(-0.2F, 0.2F, 48000, 2, block) {}
    stereo of(const stereo& in) {
        return in_planar_blocks(in, block, [this](float* x) { process(x, x); });
    }
};

samples late(const samples& x) {
    return planar(samples(latency), part(x, 0, x.size() - latency));
}

TEST(Limiter, LeavesWhatIsBelowTheCeilingAsItIsNineFramesLate) {
    const stereo quiet = {noise(4 * block, 1, 0.97F), noise(4 * block, 2, 0.97F)};
    const stereo heard = participants_limiter().of(quiet);
    EXPECT_TRUE(same_bits(late(quiet.left), heard.left));
    EXPECT_TRUE(same_bits(late(quiet.right), heard.right));
}

TEST(Limiter, TurnsBothSidesDownToTheCeilingOfTheLouderAndHoldsAndReleasesThem) {
    constexpr size_t loud_frames = 960;
    constexpr size_t held_frames = 963; // a peak is looked at anew every nine frames
    samples loud(8 * block);
    std::fill_n(loud.begin(), loud_frames, -2.0F);
    const samples beside(8 * block, 0.1F);
    samples expected;
    for (size_t i = 0; i < beside.size(); ++i) {
        const double envelope = i < held_frames
                                    ? 2.0 - (2.0 - ceiling) * std::pow(0.618966, i + 1)
                                    : ceiling + (2.0 - ceiling) * std::pow(0.990452, i + 1 - held_frames);
        expected.push_back(i < latency ? 0.0F : static_cast<float>(0.1 * ceiling / envelope));
    }
    const stereo left_loud = participants_limiter().of({loud, beside});
    EXPECT_NEAR(left_loud.left[loud_frames], -ceiling, 1e-6F);
    constexpr double six_digits_db = -100.0; // of the two constants
    EXPECT_TRUE(error_below(expected, left_loud.right, six_digits_db));
    EXPECT_TRUE(error_below(expected, participants_limiter().of({beside, loud}).left, six_digits_db));
}

TEST(Limiter, RecoversFromSamplesThatAreNoNumbers) {
    using limits = std::numeric_limits<float>;
    for (const float wild : {limits::infinity(), limits::quiet_NaN()}) {
        participants_limiter limiter;
        samples right(block);
        right[100] = wild;
        const stereo struck = limiter.of({samples(block, 0.5F), right});
        EXPECT_FALSE(std::isfinite(struck.right[100 + latency])) << "the sample itself leaves as it came";
        EXPECT_LT(struck.left[200], 1e-15F);
        const samples after(120 * block, 0.5F);
        EXPECT_NEAR(limiter.of({after, after}).left.back(), 0.5F, 1e-5F)
            << "as near as single precision lets the release come";
    }
}

TEST(Limiter, OfOneChannelReadsAStereoBlockAndWritesTheLeftHalf) {
    quenlis_limiter mono(-0.2F, 0.2F, 48000, 1, block);
    samples out(2 * block, -7.0F);
    mono.process(planar(samples(block, 0.5F), samples(block, 100.0F)).data(), out.data());
    EXPECT_EQ(out[block - 1], 0.5F) << "the right half counts for nothing";
    EXPECT_THAT(part(out, block, 2 * block), testing::Each(-7.0F));
}

} // namespace
