// One listener's queues and their sum.
#include "conference/flags.h"
#include "kit/compare.h"
#include "kit/signals.h"
#include "mix/listener_engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

namespace {

using test_kit::same_bits;
using testing::Each;

constexpr int frames = 480;

class ListenerEngine : public testing::Test {
protected:
    std::vector<float> pull(int expected) {
        std::vector<float> out(2 * frames, -9.0F);
        EXPECT_EQ(engine_.output_audio(out.data()), expected);
        return out;
    }
    int32_t push(int32_t id, float value, float gain = 1.0F) {
        const std::vector<float> block(2 * frames, value);
        return engine_.input_audio(id, block.data(), gain);
    }
    static std::vector<float> both_sides(float value) { return std::vector<float>(2 * frames, value); }

    const quenlis_common_object common_ = quenlis_common_object::derive({48000, frames, 2, false, 1});
    quenlis_flags flags_;
    listener_engine engine_{&flags_, &common_, frames};
};

TEST_F(ListenerEngine, HasNothingBeforeTheFirstBlock) {
    EXPECT_EQ(engine_.add_source(1, 1), 1);
    EXPECT_TRUE(engine_.sourceExists(1));
    EXPECT_THAT(pull(0), Each(0.0F));
    EXPECT_EQ(push(2, 1.0F), 0) << "an unknown talker";
    EXPECT_THAT(pull(0), Each(0.0F));
}

TEST_F(ListenerEngine, TakesOneBlockASourceInTheOrderOfPushing) {
    engine_.add_source(1, 2);
    for (const float value : {0.1F, 0.2F, 0.3F})
        EXPECT_EQ(push(1, value), 1);
    for (const float value : {0.1F, 0.2F, 0.3F})
        EXPECT_TRUE(same_bits(both_sides(value), pull(frames)));
    EXPECT_THAT(pull(0), Each(0.0F));
    push(1, 0.4F);
    EXPECT_TRUE(same_bits(both_sides(0.4F), pull(frames))) << "back after the under-run";
}

TEST_F(ListenerEngine, MixesTheOthersWhenOneUnderRuns) {
    engine_.add_source(1, 2);
    engine_.add_source(2, 2);
    push(1, 0.25F);
    push(2, 0.5F);
    push(2, 0.5F);
    EXPECT_TRUE(same_bits(both_sides(0.75F), pull(frames)));
    EXPECT_TRUE(same_bits(both_sides(0.5F), pull(frames)));
}

TEST_F(ListenerEngine, ScalesAtTheQueuesEntry) {
    engine_.add_source(1, 2);
    engine_.add_source(2, 1);
    push(1, 0.5F, 0.25F);
    push(2, 1.0F, 0.25F);
    EXPECT_TRUE(same_bits(both_sides(0.125F + 0.25F * 0.70710677F), pull(frames)));
}

TEST_F(ListenerEngine, KeepsTheSidesOfAStereoSource) {
    engine_.add_source(1, 2);
    const auto block = test_kit::noise(2 * frames, 3);
    engine_.input_audio(1, block.data(), 1.0F);
    EXPECT_TRUE(same_bits(block, pull(frames)));
}

TEST_F(ListenerEngine, GoesOnAfterAFlush) {
    engine_.add_source(1, 2);
    engine_.add_source(2, 2);
    push(1, 0.5F);
    push(2, 0.25F);
    engine_.flush_source(1);
    engine_.flush_source(99);
    EXPECT_TRUE(same_bits(both_sides(0.25F), pull(frames)));
    push(1, 0.5F);
    engine_.flush_all_sources();
    EXPECT_THAT(pull(0), Each(0.0F));
    push(1, 0.125F);
    EXPECT_TRUE(same_bits(both_sides(0.125F), pull(frames)));
}

TEST_F(ListenerEngine, DropsASourceAtTheNextOutput) {
    engine_.add_source(1, 2);
    push(1, 0.5F);
    engine_.remove_source(1);
    EXPECT_TRUE(engine_.sourceExists(1));
    EXPECT_EQ(push(1, 0.5F), 1);
    EXPECT_THAT(pull(0), Each(0.0F));
    EXPECT_FALSE(engine_.sourceExists(1));
    EXPECT_EQ(push(1, 0.5F), 0);
}

TEST_F(ListenerEngine, IsTheSameSumWhateverTheControlsSay) {
    engine_.add_source(1, 1);
    flags_.set_state(QNL_CONTROL_MIXING_3D_ENABLE, 1);
    engine_.updateAzimuth(1, 90);
    engine_.updateDistance(1, 1000);
    push(1, 1.0F);
    EXPECT_TRUE(same_bits(both_sides(0.70710677F), pull(frames)));
    EXPECT_EQ(engine_.getAzimuth(1), 90);
    EXPECT_EQ(engine_.getDistance(1), 1000);
    EXPECT_EQ(engine_.getElevation(1), 0);
}

} // namespace
