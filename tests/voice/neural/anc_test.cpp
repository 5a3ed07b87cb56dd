#include "voice/neural/anc.h"

#include "kit/audio.h"
#include "kit/words.h"

namespace {

using namespace test_kit;

samples clean(const samples& in, size_t block) {
    quenlis_anc canceller(48000, 1, static_cast<int>(block));
    return in_blocks(in, block, [&](float* x) { canceller.process(x, x); });
}

TEST(NoiseCanceller, GivesOneStreamAfterItsLatencyInEveryBlockLength) {
    const samples voice = words(60 * 1024, 115.0, 1).samples;
    const samples stream = part(clean(voice, 480), 480, voice.size());
    for (const auto& [block, latency] :
         {std::pair<size_t, size_t>{480, 480}, {960, 480}, {512, 992}, {1024, 1504}}) {
        const samples heard = clean(voice, block);
        EXPECT_EQ(find_delay(voice, heard, 3000), latency) << block;
        EXPECT_TRUE(same_bits(part(stream, 0, voice.size() - latency), part(heard, latency, voice.size())))
            << block;
        if (block == 512 || block == 1024) {
            EXPECT_TRUE(same_bits(part(voice, 0, block), part(heard, 0, block)))
                << "the first block passes dry";
        }
    }
}

TEST(NoiseCanceller, GivesTheSameBitsTogetherOneByOneAndOnEveryTarget) {
    const samples voice = words(20 * 960, 150.0, 2).samples;
    expect_same_bits_on_every_target([&] {
        const samples heard = clean(voice, 960);
        EXPECT_TRUE(same_bits(clean(voice, 480), heard));
        return heard;
    });
}

TEST(NoiseCanceller, HearsTheFirstChannelAndFillsBoth) {
    for (const int block : {480, 512}) {
        quenlis_anc canceller(48000, 2, block);
        const samples left = noise(static_cast<size_t>(3 * block), 1);
        const stereo heard = in_planar_blocks({left, noise(left.size(), 99)}, static_cast<size_t>(block),
                                              [&](float* x) { canceller.process(x, x); });
        EXPECT_TRUE(same_bits(clean(left, static_cast<size_t>(block)), heard.left));
        EXPECT_TRUE(same_bits(heard.left, heard.right));
    }
}

} // namespace
