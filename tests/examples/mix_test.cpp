#include "conference_runner.h"

#include <gmock/gmock.h>

#include <cmath>

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

constexpr float mono_to_stereo = 0.70710677F;
constexpr double rounding = 1e-6; // a few steps of a 32-bit float at the levels used here
constexpr std::size_t block = 480;

struct share {
    const std::vector<float>& talk;
    float gain;
};

std::vector<float> sum(const std::vector<share>& shares, std::size_t frames) {
    std::vector<float> total(frames);
    for (const auto& [talk, gain] : shares)
        for (std::size_t i = 0; i < talk.size(); ++i)
            total[i] += gain * talk[i];
    return total;
}

void expect_equal(const std::vector<float>& heard, const std::vector<float>& expected, double tolerance) {
    ASSERT_EQ(heard.size(), expected.size());
    for (std::size_t i = 0; i < heard.size(); ++i)
        ASSERT_NEAR(heard[i], expected[i], tolerance) << "frame " << i;
}

/// Alice, Bob and Carol as mono talkers of different lengths, none of them a whole number of blocks.
class conference_mix : public conference_runner {
protected:
    conference_mix() {
        record("alice.wav", alice);
        record("bob.wav", bob);
        record("carol.wav", carol);
    }

    void hold_well(const std::string& options) {
        const outcome result = hold(options + " alice.wav bob.wav carol.wav");
        ASSERT_EQ(result.exit_code, 0) << result.err;
        ASSERT_THAT(result.err, IsEmpty());
    }

    /// Checks both sides of a stereo mix of mono talkers.
    void expect_heard(const std::string& listener, const std::vector<share>& shares) {
        std::vector<share> sides;
        for (const auto& [talk, gain] : shares)
            sides.push_back({talk, gain * mono_to_stereo});
        const audio heard = mix(listener);
        ASSERT_EQ(heard.size(), 2U);
        for (const auto& side : heard)
            expect_equal(side, sum(sides, frames), rounding);
    }

    const audio alice = noise(1, 1, 1000);
    const audio bob = noise(2, 1, 100);
    const audio carol = noise(3, 1, 2000);
    static constexpr std::size_t frames = 5 * block; // the longest talker, filled up to whole blocks
};

TEST_F(conference_mix, everybody_hears_the_sum_of_the_others_on_both_sides) {
    hold_well("--listeners 1");
    expect_heard("1-alice", {{bob[0], 1}, {carol[0], 1}});
    expect_heard("2-bob", {{alice[0], 1}, {carol[0], 1}});
    expect_heard("3-carol", {{alice[0], 1}, {bob[0], 1}});
    expect_heard("4-listener1", {{alice[0], 1}, {bob[0], 1}, {carol[0], 1}});
}

TEST_F(conference_mix, a_mono_output_brings_mono_talkers_back_at_unity) {
    hold_well("--channels 1");
    const audio heard = mix("1-alice");
    ASSERT_EQ(heard.size(), 1U);
    expect_equal(heard[0], sum({{bob[0], 1}, {carol[0], 1}}, frames), rounding);
}

TEST_F(conference_mix, whisperers_hear_the_main_room_at_a_quarter_and_are_not_heard_there) {
    hold_well("--whisper alice,2=3");
    expect_heard("1-alice", {{bob[0], 1}, {carol[0], 0.25F}});
    expect_heard("2-bob", {{alice[0], 1}, {carol[0], 0.25F}});
    expect_heard("3-carol", {});
}

TEST_F(conference_mix, a_sidebar_hears_only_itself) {
    hold_well("--sidebar alice,bob=1");
    expect_heard("1-alice", {{bob[0], 1}});
    expect_heard("2-bob", {{alice[0], 1}});
    expect_heard("3-carol", {});
}

TEST_F(conference_mix, controls_are_set_by_name_or_number_for_one_or_for_all) {
    hold_well("--set alice:QNL_CONTROL_MUTE_ENABLE=true --set 12=50 --set 3:qnl_control_master_gain=25");
    expect_heard("1-alice", {{bob[0], 0.5F}, {carol[0], 0.5F}});
    expect_heard("2-bob", {{carol[0], 0.5F}});
    expect_heard("3-carol", {{bob[0], 0.25F}});
}

TEST_F(conference_mix, other_block_lengths_give_the_same_mix) {
    for (const std::size_t length : {512U, 960U, 1024U}) {
        hold_well("--frames " + std::to_string(length));
        const std::size_t whole = (carol[0].size() + length - 1) / length * length;
        expect_equal(mix("2-bob")[1], sum({{alice[0], mono_to_stereo}, {carol[0], mono_to_stereo}}, whole),
                     rounding);
    }
}

TEST_F(conference_mix, the_layouts_of_the_example_can_be_used) {
    const std::string layouts = QUENLIS_SOURCE_DIR "/examples/conference/layouts.json";
    hold_well("--layout-file " + layouts);
    expect_heard("2-bob", {{alice[0], 1}, {carol[0], 1}});
    hold_well("--layout 2 --layout-file " + layouts);
    expect_heard("2-bob", {{alice[0], 0.5F}, {carol[0], 0.5F}});
    hold_well("--layout 3 --layout-file " + layouts);
    expect_heard("2-bob", {{alice[0], 1}, {carol[0], 1}});
}

class conference_formats : public conference_runner, public testing::WithParamInterface<std::string> {};

TEST_P(conference_formats, a_stereo_talker_keeps_both_sides_beside_a_mono_talker) {
    const audio band = noise(4, 2, 4 * block);
    const audio singer = noise(5, 1, 4 * block);
    record("band.flac", band, 48000, flac);
    record("singer.wav", singer, 48000, wav_16);
    const outcome result = hold(GetParam() + " --listeners 1 band.flac singer.wav");
    ASSERT_EQ(result.exit_code, 0) << result.err;
    const audio heard = mix("3-listener1");
    ASSERT_EQ(heard.size(), 2U);
    // The 16-bit calls scale by 3.0518e-5 and cut towards zero, which costs up to two steps.
    const double tolerance = GetParam().find("short") == std::string::npos ? rounding : 2.0 / 32768;
    for (std::size_t side = 0; side < 2; ++side)
        expect_equal(heard[side], sum({{band[side], 1}, {singer[0], mono_to_stereo}}, 4 * block), tolerance);
}

INSTANTIATE_TEST_SUITE_P(all, conference_formats,
                         testing::Values("--sample-type short", "--sample-type short --interleaving planar",
                                         "--sample-type float", "--sample-type float --interleaving planar",
                                         "--sample-type double",
                                         "--sample-type double --interleaving planar"));

constexpr const char* two_layouts = R"({"default": "row", "room_list": {
    "row":  {"id": 1, "desc": "", "allowParticipantStacking": true, "openRoom": false,
             "centerPoint": {"x": 0, "y": 0, "z": 0}, "seats": [{"x": 0, "y": 0, "z": -1}, {"x": 1, "y": 0, "z": 0}]},
    "open": {"id": 7, "desc": "", "allowParticipantStacking": true, "openRoom": true,
             "centerPoint": {"x": 0, "y": 0, "z": 0}, "seats": [{"x": 0, "y": 0, "z": 0}]}}})";

class conference_report : public conference_runner {
protected:
    conference_report() {
        record("tone.wav", {std::vector<float>(2 * block, 0.5F)});
        record("short.wav", {std::vector<float>(block, 0.1F)});
        write_text("layouts.json", two_layouts);
    }
};

TEST_F(conference_report, lists_seats_levels_and_blocks_without_audio) {
    const outcome result = hold("--layout-file layouts.json tone.wav short.wav");
    ASSERT_EQ(result.exit_code, 0) << result.err;
    EXPECT_THAT(result.out, testing::ContainsRegex("1 +tone +1 +-6\\.0 +-26\\.0 +-23\\.0 +1\n"));
    EXPECT_THAT(result.out, testing::ContainsRegex("2 +short +2 +-20\\.0 +-9\\.0 +-9\\.0 +0\n"));
    EXPECT_THAT(result.out, HasSubstr("times faster than real time"));
}

TEST_F(conference_report, shows_the_engines_log_when_asked) {
    const outcome result = hold("--log info tone.wav");
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_THAT(result.out, HasSubstr("[INFO]: A new room with id 1 was created"));
}

TEST_F(conference_report, says_nothing_when_quiet) {
    const outcome result = hold("--quiet --layout-file layouts.json --layout 7 --device speaker tone.wav");
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_THAT(result.out + result.err, IsEmpty());
}

} // namespace
