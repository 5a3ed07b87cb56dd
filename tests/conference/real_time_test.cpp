// What an audio call owes its thread, and that the processor it runs on does not change a bit.
#include "kit/host.h"

#include <cfenv>

namespace {

using namespace test_kit;

void turn_everything_on(engine& engine, int people) {
    for (int id = 1; id <= people; ++id) {
        for (const qnl_audio_control stage :
             {QNL_CONTROL_ANC_ENABLE, QNL_CONTROL_AGC_ENABLE, QNL_CONTROL_AUTO_EQ_ENABLE})
            engine.set(id, stage, 1);
        engine.set(id, QNL_CONTROL_DEVICE, QNL_DEVICE_SPEAKER);
    }
}

TEST(RealTime, AudioCallsAllocateTheMixesBlocksOnlyWithEveryStageOn) {
    engine engine({1, 2, 1, 2, 1});
    constexpr int people = 5;
    turn_everything_on(engine, people);
    const std::vector<float> block(960, 0.1F);
    std::vector<float> output(960);
    for (int period = 0; period < 4; ++period) {
        for (int id = 1; id <= people; ++id) {
            const allocation_counter input;
            qnl_input_audio_float(engine.handle(), 1, id, block.data(), 480);
            // One block for each listener; the first push makes the head of each queue as well.
            EXPECT_EQ(input.allocations(), (period == 0 ? 2U : 1U) * (people - 1)) << period;
            EXPECT_EQ(input.releases(), 0U);
        }
        for (int id = 1; id <= people; ++id) {
            const allocation_counter heap;
            EXPECT_EQ(qnl_output_audio_float(engine.handle(), 1, id, output.data()), QNL_ERROR_NONE);
            EXPECT_EQ(heap.allocations(), 0U) << period;
            // A block of each talker; at first also the three queued changes of each one's place.
            EXPECT_EQ(heap.releases(), (period == 0 ? 4U : 1U) * (people - 1)) << period;
        }
    }
    engine.set(1, QNL_CONTROL_MUTE_ENABLE, 1);
    const allocation_counter muted;
    qnl_input_audio_float(engine.handle(), 1, 1, block.data(), 480);
    EXPECT_EQ(muted.allocations(), 0U);
}

#if defined(__x86_64__) || defined(__aarch64__)
/// Whether rounding, denormal results and denormal operands are as this host has set them.
bool as_the_host_set_it() {
    const volatile float smallest = std::numeric_limits<float>::min();
    const volatile float denormal = std::numeric_limits<float>::denorm_min();
    const volatile float three = 3.0F;
    const bool downward = 1.0F / three < 1.0 / 3.0; // the nearest float is above
    return downward && smallest / 2.0F > 0.0F && denormal > 0.0F;
}

TEST(RealTime, TheHostsFloatingPointSettingComesBackOnEveryWayOut) {
    engine engine({1, 1});
    engine.set(2, QNL_CONTROL_STEREO_BYPASS_ENABLE, 1);
    const samples block(480, std::numeric_limits<float>::denorm_min());
    std::fesetround(FE_DOWNWARD);
    engine.push(1, block);
    EXPECT_TRUE(as_the_host_set_it());
    EXPECT_EQ(engine.pull(2).samples[0], 0.0F) << "inside a call denormals are zero";
    EXPECT_TRUE(as_the_host_set_it());
    engine.push(1, block, 7); // a raised refusal
    EXPECT_TRUE(as_the_host_set_it());
    std::fesetround(FE_TONEAREST);
}
#endif

/// What a conference with every mixing rule and every stage in use gives, all blocks one after the other.
samples rendered_conference() {
    engine engine({1, 2, 1, 2}, {24000, 240, 2, true, 1});
    engine.add(5, 1, QNL_PARTICIPANT_REGULAR, 16000);
    turn_everything_on(engine, 5);
    engine.set(3, QNL_CONTROL_WHISPER_ROOM, 1);
    engine.set(4, QNL_CONTROL_MASTER_GAIN, 33);
    engine.set(2, QNL_CONTROL_MIXING_3D_ENABLE, 1);
    samples mixes;
    for (std::uint32_t period = 0; period < 40; ++period) {
        for (std::uint32_t id = 1; id <= 4; ++id)
            engine.push(static_cast<int>(id), noise(960, 7 * period + id, 0.7F), 480);
        engine.push(5, noise(160, period));
        for (int id = 1; id <= 5; ++id)
            mixes = planar(mixes, engine.pull(id).samples);
    }
    return mixes;
}

TEST(RealTime, AConferenceHasTheSameBitsOnEveryInstructionSet) {
    const engine first; // the first start of a process picks an instruction set, which would undo the test's
    expect_same_bits_on_every_target(rendered_conference);
}

} // namespace
