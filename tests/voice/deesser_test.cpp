#include "voice/deesser.h"

#include "kit/audio.h"

namespace {

using namespace test_kit;

samples through(quenlis_deesser& deesser, const samples& in) {
    samples out(in.size());
    deesser.process(in.data(), out.data());
    return out;
}

TEST(Deesser, FollowsItsRecursionOnBothChannels) {
    // Evaluated in double precision, apart from the code. Both ends of the ratio and every constant count.
    const samples left = {-0.07682962F, 0.68329072F, 0.13953404F,  0.19902416F,  -0.2599082F,  -0.08500049F,
                          -0.10564706F, 0.13657901F, -0.19921459F, -0.06815018F, -0.17176124F, -0.07105305F};
    const samples right = {0.0F,         0.064769067F,  0.22471257F,   0.12271468F,
                           0.11309122F,  0.056117389F,  -0.029057143F, -0.03183911F,
                           -0.09156486F, -0.045806840F, 0.013804197F,  0.047506616F};
    const samples in = planar(noise(12, 1, 0.9F), sine(12, 5000.0, 0.5F));
    quenlis_deesser deesser(48000, 2, 12);
    EXPECT_TRUE(error_below(planar(left, right), through(deesser, in), -130.0));
}

TEST(Deesser, LeavesConstantsAndLowTonesAloneAndTurnsHissDown) {
    constexpr int second = 48000;
    quenlis_deesser constant(second, 1, second);
    through(constant, samples(second, 0.5F)); // the step at the start is sibilance
    EXPECT_TRUE(error_below(samples(second, 0.5F), through(constant, samples(second, 0.5F)), -100.0));
    quenlis_deesser low(second, 1, second);
    const samples tone = sine(second, 200.0, 0.3F);
    EXPECT_TRUE(error_below(tone, through(low, tone), -60.0));
    quenlis_deesser high(second, 1, second);
    const samples hiss = sine(second, 9000.0, 0.5F);
    EXPECT_THAT(gain_db_at(hiss, through(high, hiss), 9000.0),
                testing::AllOf(testing::Lt(-6.0), testing::Gt(-24.1)));
}

TEST(Deesser, GivesTheSameInBlocksOfAnyLengthAndTouchesOneBlockOfOneChannel) {
    const samples voice = noise(960, 2);
    quenlis_deesser whole(48000, 1, 960);
    quenlis_deesser halves(48000, 1, 480);
    const samples once = in_blocks(voice, 960, [&](float* x) { whole.process(x, x); });
    EXPECT_TRUE(same_bits(once, in_blocks(voice, 480, [&](float* x) { halves.process(x, x); })));
    samples out(32, 7.0F);
    quenlis_deesser(48000, 1, 16).process(voice.data(), out.data());
    EXPECT_THAT(part(out, 16, 32), testing::Each(7.0F));
    quenlis_deesser(48000, 2, 0).process(nullptr, nullptr);
}

} // namespace
