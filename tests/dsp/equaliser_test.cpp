#include "dsp/equaliser.h"

#include "kit/audio.h"

namespace {

using namespace test_kit;

TEST(Equaliser, FiltersABlockByTheChainAsThoughSilenceCameBefore) {
    const float first_a[] = {1.0F, -0.9F};
    const float first_b[] = {0.5F, 0.25F};
    const float second_a[] = {1.0F, 0.2F, 0.5F};
    const float second_b[] = {1.0F, -1.0F, 0.3F};
    quenlis_EQ equaliser;
    equaliser.add_filter(2, first_a, first_b);
    equaliser.add_filter(3, second_a, second_b);
    // The poles lie at 0.9 and 0.71 from the centre: after 272 zeros the ring has decayed below -240 dB.
    const samples in = noise(480, 3);
    const samples out = in_blocks(in, 240, [&](float* x) { equaliser.process(x, x, 240); });
    for (const size_t start : {0U, 240U}) {
        samples expected = part(in, start, start + 240);
        quenlis_filter(2, first_a, first_b).process(expected.data(), expected.data(), 240);
        quenlis_filter(3, second_a, second_b).process(expected.data(), expected.data(), 240);
        EXPECT_TRUE(error_below(expected, part(out, start, start + 240), -110.0))
            << "of two transforms of 512 points in single precision";
    }
}

} // namespace
