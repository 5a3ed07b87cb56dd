// What holds of both cleaners of a talker, which work on frames of 480.
#include "kit/audio.h"
#include "kit/words.h"
#include "voice/neural/anc.h"
#include "voice/recurrent/rnn.h"

namespace {

using namespace test_kit;

struct canceller : quenlis_anc {
    canceller(int block, int channels) : quenlis_anc(48000, channels, block) {}
};

template <class Cleaner>
samples clean(const samples& in, size_t block) {
    Cleaner cleaner(static_cast<int>(block), 1);
    return in_blocks(in, block, [&](float* x) { cleaner.process(x, x); });
}

template <class Cleaner>
class Cleaners : public testing::Test {};

struct names {
    template <class Cleaner>
    static std::string GetName(int /*index*/) {
        return std::is_same_v<Cleaner, canceller> ? "Canceller" : "Denoiser";
    }
};

using both = testing::Types<canceller, quenlis_rnn>;
TYPED_TEST_SUITE(Cleaners, both, names);

TYPED_TEST(Cleaners, GiveOneStreamAfterTheirLatencyInEveryBlockLength) {
    const samples voice = words(60 * 1024, 115.0, 1).samples;
    const samples stream = part(clean<TypeParam>(voice, 480), 480, voice.size());
    for (const auto& [block, latency] :
         {std::pair<size_t, size_t>{480, 480}, {960, 480}, {512, 992}, {1024, 1504}}) {
        const samples heard = clean<TypeParam>(voice, block);
        EXPECT_EQ(find_delay(voice, heard, 3000), latency) << block;
        EXPECT_TRUE(same_bits(part(stream, 0, voice.size() - latency), part(heard, latency, voice.size())))
            << block;
        if (block == 512 || block == 1024) {
            EXPECT_TRUE(same_bits(part(voice, 0, block), part(heard, 0, block)))
                << "the first block passes dry";
        }
    }
}

TYPED_TEST(Cleaners, GiveTheSameBitsOnEveryTarget) {
    const samples voice = words(20 * 960, 150.0, 2).samples;
    expect_same_bits_on_every_target(
        [&] { return planar(clean<TypeParam>(voice, 960), clean<TypeParam>(voice, 480)); });
}

TYPED_TEST(Cleaners, HearTheFirstChannelAndFillBoth) {
    for (const size_t block : {480, 512, 1024}) {
        TypeParam cleaner(static_cast<int>(block), 2);
        const samples left = noise(3 * block, 1);
        const stereo heard =
            in_planar_blocks({left, noise(left.size(), 99)}, block, [&](float* x) { cleaner.process(x, x); });
        EXPECT_TRUE(same_bits(clean<TypeParam>(left, block), heard.left));
        EXPECT_TRUE(same_bits(heard.left, heard.right));
    }
}

} // namespace
