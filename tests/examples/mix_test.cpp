#include "conference_runner.h"

#include <algorithm>
#include <gmock/gmock.h>

namespace {

using namespace testing;

constexpr float mono_to_stereo = 0.70710677F;
constexpr double rounding = 1e-6; // a few steps of a 32-bit float at the levels used here
constexpr std::size_t block = 480;
constexpr std::size_t latency = 9; // of the limiter
const std::string layouts = "--layout-file " QUENLIS_SOURCE_DIR "/examples/conference/layouts.json ";

struct share {
    const std::vector<float>& talk;
    float gain; // of a mono talker; one side of a stereo talker comes louder
};

/// Checks one side of a mix against the talkers' shares in it; shorter talkers are followed by silence.
void expect_sum(const std::vector<float>& heard, const std::vector<share>& shares, std::size_t frames,
                double tolerance = rounding) {
    std::vector<float> expected(frames);
    for (const auto& [talk, gain] : shares)
        for (std::size_t i = 0; i < std::min(talk.size(), frames - latency); ++i)
            expected[i + latency] += gain * mono_to_stereo * talk[i];
    EXPECT_THAT(heard, Pointwise(FloatNear(static_cast<float>(tolerance)), expected));
}

/// Alice, Bob and Carol as mono talkers of different lengths, none of them a whole number of blocks.
class conference_mix : public conference_runner {
protected:
    conference_mix() {
        record("alice.wav", {alice});
        record("bob.wav", {bob});
        record("carol.wav", {carol});
    }

    void hold_well(const std::string& options) {
        const outcome result = hold(options + " alice.wav bob.wav carol.wav");
        ASSERT_EQ(result.exit_code, 0) << result.err;
        ASSERT_THAT(result.err, IsEmpty());
    }

    /// Checks both sides of a stereo mix of mono talkers.
    void expect_heard(const std::string& listener, float of_alice, float of_bob, float of_carol,
                      std::size_t frames = 5 * block) {
        const audio heard = mix(listener);
        ASSERT_EQ(heard.size(), 2U);
        for (const auto& side : heard)
            expect_sum(side, {{alice, of_alice}, {bob, of_bob}, {carol, of_carol}}, frames);
    }

    const std::vector<float> alice = noise(1, 1, 1000)[0];
    const std::vector<float> bob = noise(2, 1, 100)[0];
    const std::vector<float> carol = noise(3, 1, 2000)[0];
};

TEST_F(conference_mix, everybody_hears_the_sum_of_the_others_on_both_sides) {
    hold_well("--listeners 1");
    expect_heard("1-alice", 0, 1, 1);
    expect_heard("2-bob", 1, 0, 1);
    expect_heard("3-carol", 1, 1, 0);
    expect_heard("4-listener1", 1, 1, 1);
}

TEST_F(conference_mix, whisperers_hear_the_main_room_at_a_quarter_and_a_sidebar_only_itself) {
    hold_well("--whisper alice,2=3");
    expect_heard("2-bob", 1, 0, 0.25F);
    expect_heard("3-carol", 0, 0, 0);
    hold_well("--sidebar alice,bob=1");
    expect_heard("1-alice", 0, 1, 0);
}

TEST_F(conference_mix, controls_are_set_by_name_or_number_for_one_or_for_all) {
    hold_well("--set alice:QNL_CONTROL_MUTE_ENABLE=true --set 12=50 --set 3:qnl_control_master_gain=25");
    expect_heard("1-alice", 0, 0.5F, 0.5F);
    expect_heard("2-bob", 0, 0, 0.5F);
    expect_heard("3-carol", 0, 0.25F, 0);
}

TEST_F(conference_mix, other_block_lengths_and_layouts_give_the_same_mix) {
    for (const std::size_t length : {512U, 960U, 1024U}) {
        hold_well("--frames " + std::to_string(length));
        expect_heard("2-bob", 1, 0, 1, (carol.size() + length - 1) / length * length);
    }
    hold_well(layouts + "--layout 3");
    expect_heard("2-bob", 1, 0, 1);
    hold_well(layouts + "--layout 2"); // its default states halve the master gain
    expect_heard("2-bob", 0.5F, 0, 0.5F);
}

TEST_F(conference_runner, a_stereo_talker_keeps_both_sides_beside_a_mono_talker_in_every_format) {
    const audio band = noise(4, 2, 4 * block);
    const audio singer = noise(5, 1, 4 * block);
    record("band.flac", band, 48000, SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    record("singer.wav", singer, 48000, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    for (const std::string type : {"short", "float", "double"}) {
        for (const std::string interleaving : {"interleaved", "planar"}) {
            const outcome result = hold("--sample-type " + type + " --interleaving " + interleaving +
                                        " --listeners 1 band.flac singer.wav");
            ASSERT_EQ(result.exit_code, 0) << result.err;
            const audio heard = mix("3-listener1");
            // The 16-bit calls scale by 3.0518e-5 and cut towards zero, which costs up to two steps.
            const double tolerance = type == "short" ? 2.0 / 32768 : rounding;
            for (std::size_t side = 0; side < 2; ++side)
                expect_sum(heard.at(side), {{band[side], 1 / mono_to_stereo}, {singer[0], 1}}, 4 * block,
                           tolerance);
        }
    }
}

TEST_F(conference_runner, recordings_and_mixes_may_have_rates_of_their_own) {
    for (const std::size_t rate : {8000U, 44100U, 48000U})
        record(std::to_string(rate) + ".wav", {std::vector<float>(rate, 0.25F)}, static_cast<int>(rate));
    for (const std::size_t rate : {16000U, 48000U}) {
        const outcome result = hold("--channels 1 --listeners 1 --rate " + std::to_string(rate) +
                                    " 8000.wav 44100.wav 48000.wav");
        ASSERT_EQ(result.exit_code, 0) << result.err;
        const auto heard = mix("4-listener1").at(0);
        ASSERT_EQ(heard.size(), rate) << "a second";
        const float out_of_the_engine = rate == 48000 ? 1.0F : 0.98F;
        EXPECT_NEAR(heard[heard.size() / 2], 0.25F * (0.98F + 0.98F + 1.0F) * out_of_the_engine, 1e-4F);
    }
}

TEST_F(conference_runner, the_report_lists_seats_levels_and_blocks_without_audio) {
    record("tone.wav", {std::vector<float>(2 * block, 0.5F)});
    record("short.wav", {std::vector<float>(block, 0.1F)});
    const outcome table = hold(layouts + "tone.wav short.wav");
    ASSERT_EQ(table.exit_code, 0) << table.err;
    EXPECT_THAT(table.out, ContainsRegex("1 +tone +1 +-6\\.0 +-26\\.1 +-23\\.0 +1\n"));
    EXPECT_THAT(table.out, ContainsRegex("2 +short +2 +-20\\.0 +-9\\.1 +-9\\.0 +0\n"));
    EXPECT_THAT(table.out, HasSubstr("times faster than real time"));

    EXPECT_THAT(hold("--log info tone.wav").out, HasSubstr("[INFO]: A new room with id 1 was created"));

    const outcome quiet = hold("--quiet --device speaker " + layouts + "--layout 3 tone.wav");
    EXPECT_EQ(quiet.exit_code, 0);
    EXPECT_THAT(quiet.out + quiet.err, IsEmpty());
}

} // namespace
