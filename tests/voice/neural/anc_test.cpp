#include "voice/neural/anc.h"

#include "dsp/vector_targets.h"
#include "kit/allocation_counter.h"
#include "kit/compare.h"
#include "kit/signals.h"

#include <algorithm>

namespace {

using namespace test_kit;
using samples = std::vector<float>;

samples clean(quenlis_anc& canceller, const samples& in, size_t block) {
    samples out = in;
    for (size_t start = 0; start + block <= in.size(); start += block)
        canceller.process(&out[start], &out[start]);
    return out;
}

samples cut(const samples& x, size_t from, size_t to) {
    return {x.begin() + static_cast<std::ptrdiff_t>(from), x.begin() + static_cast<std::ptrdiff_t>(to)};
}

TEST(NoiseCanceller, PassesVoiceAfterItsLatencyInEveryBlockLength) {
    for (const auto& [block, latency] :
         {std::pair<size_t, size_t>{480, 480}, {960, 480}, {512, 992}, {1024, 1504}}) {
        quenlis_anc canceller(48000, 1, static_cast<int>(block));
        const samples voice = speech_like(60 * block, 1);
        const samples heard = clean(canceller, voice, block);
        EXPECT_EQ(find_delay(voice, heard, 3000), latency) << block;
        EXPECT_TRUE(error_below(cut(voice, 960, voice.size() - latency),
                                cut(heard, 960 + latency, voice.size()), -60.0))
            << block;
        if (block == 512 || block == 1024) {
            EXPECT_TRUE(same_bits(cut(voice, 0, block), cut(heard, 0, block)))
                << "the first block passes dry";
        }
    }
}

TEST(NoiseCanceller, GivesTheSameBitsTogetherOneByOneAndOnEveryTarget) {
    const samples voice = speech_like(20 * 960, 2);
    samples first;
    const int former = active_vector_target();
    for (int target = 0; target < vector_target_count(); ++target) {
        select_vector_target(target);
        quenlis_anc together(48000, 1, 960);
        quenlis_anc one_by_one(48000, 1, 480);
        const samples heard = clean(together, voice, 960);
        EXPECT_TRUE(same_bits(clean(one_by_one, voice, 480), heard)) << vector_target_name(target);
        if (target == 0)
            first = heard;
        EXPECT_TRUE(same_bits(first, heard)) << vector_target_name(target);
    }
    select_vector_target(former);
}

TEST(NoiseCanceller, HearsTheFirstChannelAndFillsBothWithoutAllocating) {
    for (const int block : {480, 512}) {
        const auto size = static_cast<size_t>(block);
        quenlis_anc stereo(48000, 2, block);
        quenlis_anc mono(48000, 1, block);
        for (std::uint32_t seed = 1; seed < 4; ++seed) {
            samples x = planar(noise(size, seed), noise(size, 99));
            samples y = noise(size, seed);
            const allocation_counter heap;
            stereo.process(x.data(), x.data());
            mono.process(y.data(), y.data());
            EXPECT_EQ(heap.allocations(), 0U);
            EXPECT_TRUE(same_bits(planar(y, y), x));
        }
    }
}

} // namespace
