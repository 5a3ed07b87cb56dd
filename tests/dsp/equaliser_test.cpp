#include "dsp/equaliser.h"

#include "kit/allocation_counter.h"
#include "kit/compare.h"
#include "kit/signals.h"

namespace {

using namespace test_kit;
using samples = std::vector<float>;

constexpr double rounding_db = -110.0; // of two transforms of 512 points in single precision

TEST(Equaliser, OfAnIdentityReturnsItsInputInEveryBlock) {
    const float identity[] = {1.0F, 0.0F, 0.0F};
    quenlis_EQ equaliser;
    equaliser.add_filter(3, identity, identity);
    for (const std::uint32_t seed : {1U, 2U}) {
        const samples in = noise(240, seed);
        samples out = in;
        const allocation_counter heap;
        equaliser.process(out.data(), out.data(), 240);
        EXPECT_EQ(heap.allocations(), 0U);
        EXPECT_TRUE(error_below(in, out, rounding_db));
    }
}

TEST(Equaliser, FiltersABlockByTheChainAsThoughSilenceCameBefore) {
    const float first_a[] = {1.0F, -0.9F};
    const float first_b[] = {0.5F, 0.25F};
    const float second_a[] = {1.0F, 0.2F, 0.5F};
    const float second_b[] = {1.0F, -1.0F, 0.3F};
    quenlis_EQ equaliser;
    equaliser.add_filter(2, first_a, first_b);
    equaliser.add_filter(3, second_a, second_b);
    // The poles lie at 0.9 and 0.71 from the centre: after 272 zeros the ring has decayed below -240 dB.
    for (const std::uint32_t seed : {3U, 4U}) {
        const samples in = noise(240, seed);
        quenlis_filter first(2, first_a, first_b);
        quenlis_filter second(3, second_a, second_b);
        samples expected(240);
        first.process(in.data(), expected.data(), 240);
        second.process(expected.data(), expected.data(), 240);
        samples out(240);
        equaliser.process(in.data(), out.data(), 240);
        EXPECT_TRUE(error_below(expected, out, rounding_db));
    }
}

} // namespace
