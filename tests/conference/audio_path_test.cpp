// The two roads of a block, through the exported functions.
#include "kit/host.h"
#include "kit/words.h"

#include <tuple>

namespace {

using namespace test_kit;
using namespace testing;

constexpr float side_gain = 0.70710677F;
constexpr size_t frames = 480;

samples block(int seed) {
    return noise(frames, static_cast<std::uint32_t>(seed), 0.5F);
}

/// An engine whose participants hear their mix as it is, without the stages of the listener's road.
struct plain_engine : engine {
    explicit plain_engine(std::initializer_list<int> channels,
                          qnl_library_configuration configuration = {48000, 480, 2, false, 1})
        : engine(channels, configuration) {
        for (int id = 1; id <= static_cast<int>(channels.size()); ++id)
            set(id, QNL_CONTROL_STEREO_BYPASS_ENABLE, 1);
    }
};

/// A first block behind the limiter.
samples limited(const samples& x) {
    return planar(samples(9), part(x, 0, x.size() - 9));
}

/// What a stereo listener hears of a mono talker.
samples centred(const samples& talk) {
    return planar(scaled(talk, side_gain), scaled(talk, side_gain));
}

TEST(AudioPath, BlocksQueueInOrderAndAnUnderRunStopsNobodyElse) {
    plain_engine engine({1, 1, 1});
    for (const int seed : {1, 2, 3})
        engine.push(1, block(seed));
    engine.push(2, block(9));
    EXPECT_TRUE(same_bits(sum(centred(block(1)), centred(block(9))), engine.pull(3).samples));
    EXPECT_TRUE(same_bits(centred(block(2)), engine.pull(3).samples));
    engine.push(2, block(8));
    EXPECT_TRUE(same_bits(sum(centred(block(3)), centred(block(8))), engine.pull(3).samples));
    EXPECT_EQ(engine.pull(3).code, QNL_ERROR_NO_INPUT_AUDIO);
    engine.push(1, block(4));
    EXPECT_TRUE(same_bits(centred(block(4)), engine.pull(3).samples)) << "back after the under-run";
}

TEST(AudioPath, NobodyToHearGivesSilenceAndItsCode) {
    engine engine({1});
    engine.push(1, block(1));
    log_capture log(QNL_LOG_DEBUG);
    EXPECT_EQ(engine.pull(1).code, QNL_ERROR_NO_INPUT_AUDIO);
    EXPECT_THAT(log.take(), ElementsAre("DEBUG: There was no input audio for this participant 1 to process"));
    EXPECT_THAT(engine.pull(1).samples, Each(0.0F));
    const auto expect_silence = [&](auto pull, auto block) {
        EXPECT_EQ(pull(engine.handle(), 1, 1, block.data()), QNL_ERROR_NO_INPUT_AUDIO);
        EXPECT_THAT(block, Each(0));
    };
    expect_silence(qnl_output_audio_short, std::vector<short>(2 * frames, 99));
    expect_silence(qnl_output_audio_double, std::vector<double>(2 * frames, 99.0));
}

TEST(AudioPath, StereoFoldsForAMonoListener) {
    plain_engine engine({2, 1}, {48000, 480, 1, false, 1});
    engine.push(1, planar(block(1), block(2)), frames);
    EXPECT_TRUE(same_bits(scaled(sum(block(1), block(2)), side_gain), engine.pull(2).samples));
}

TEST(AudioPath, AnyEnhancementFoldsStereoInputUnlessBypassed) {
    const samples left = block(1);
    const samples right = block(2);
    for (const qnl_audio_control enhancement : {QNL_CONTROL_ANC_ENABLE, QNL_CONTROL_AGC_ENABLE,
                                                QNL_CONTROL_AUTO_EQ_ENABLE, QNL_CONTROL_MIXING_3D_ENABLE}) {
        plain_engine engine({2, 1});
        const auto heard = [&] {
            engine.push(1, planar(left, right), frames);
            return engine.pull(2).samples;
        };
        engine.set(1, enhancement, 1);
        EXPECT_TRUE(same_bits(planar(left, right), heard()))
            << "bypassed, whatever else is on: " << enhancement;
        engine.set(1, QNL_CONTROL_STEREO_BYPASS_ENABLE, 0);
        for (int i = 0; i < 3; ++i)
            heard(); // past the delay of any stage
        const samples folded = heard();
        const samples first = part(folded, 0, frames);
        EXPECT_GT(peak(first), 0.0F);
        // Without a stage that copies the first channel over the second, that one stays.
        const bool no_stage = enhancement == QNL_CONTROL_MIXING_3D_ENABLE;
        EXPECT_TRUE(same_bits(no_stage ? scaled(sum(left, right), 0.5F) : first, first)) << enhancement;
        EXPECT_TRUE(same_bits(no_stage ? right : first, part(folded, frames, 2 * frames))) << enhancement;
    }
}

/// By how much a mono listener hears a talker later, in frames.
double latency_of(engine& engine, int block_frames) {
    const auto length = static_cast<size_t>(block_frames);
    const samples voice = words(30720 / length * length, 150.0, 7).samples;
    samples heard;
    for (size_t start = 0; start < voice.size(); start += length) {
        engine.push(1, part(voice, start, start + length));
        heard = planar(heard, engine.pull(2).samples);
    }
    return static_cast<double>(find_delay(voice, heard, 4500).value_or(0));
}

TEST(AudioPath, IsAsLateAsTheLatencyPageSays) {
    int rows = 0;
    for (const auto& row :
         rows_of("docs/latency.md", R"(\| ([^|\n]*) \| (\d+) \| (\d+) \| (\d+) \| (\d+) \|)")) {
        if (row[2] == "480")
            continue;
        ++rows;
        const bool loud = row[1].find("loud") == 0;
        for (const auto& [column, block_frames] : {std::pair{2U, 480}, {3U, 512}, {4U, 960}, {5U, 1024}}) {
            engine engine({1, 1}, {48000, block_frames, 1, false, 1});
            engine.set(2, QNL_CONTROL_STEREO_BYPASS_ENABLE, loud || row[1] == "headphones" ? 0 : 1);
            engine.set(2, QNL_CONTROL_DEVICE, loud ? QNL_DEVICE_SPEAKER : QNL_DEVICE_HEADPHONE);
            for (int control = QNL_CONTROL_ANC_ENABLE; control <= QNL_CONTROL_AUTO_EQ_ENABLE; ++control)
                if (row[1].find(qnl_audio_control_to_string(control)) != std::string::npos)
                    engine.set(1, static_cast<qnl_audio_control>(control), 1);
            // A voice that is reshaped by several stages leans by a frame or two.
            EXPECT_NEAR(latency_of(engine, block_frames), std::stod(row[column]), 2)
                << row[1] << " at " << block_frames;
        }
    }
    EXPECT_EQ(rows, 7);
}

TEST(AudioPath, ATalkerWhoseStagesHoldANaNIsCuredByJoiningAgainAndHarmsNoOther) {
    plain_engine engine({1, 1, 1});
    for (const int id : {1, 2}) {
        engine.set(id, QNL_CONTROL_STEREO_BYPASS_ENABLE, 0);
        for (const qnl_audio_control stage :
             {QNL_CONTROL_ANC_ENABLE, QNL_CONTROL_AGC_ENABLE, QNL_CONTROL_AUTO_EQ_ENABLE})
            engine.set(id, stage, 1);
    }
    engine.push(1, samples(frames, std::numeric_limits<float>::quiet_NaN()));
    const auto all_finite = [&](int talker, int blocks) {
        double sum_of_powers = 0.0;
        for (int i = 0; i < blocks; ++i) {
            engine.push(talker, block(i));
            sum_of_powers += power(engine.pull(3).samples);
        }
        return std::isfinite(sum_of_powers);
    };
    EXPECT_FALSE(all_finite(1, 100));
    EXPECT_FALSE(all_finite(1, 4)) << "for good";
    qnl_flush_data(engine.handle(), 1, 1);
    EXPECT_TRUE(all_finite(2, 20));
    qnl_remove_participant(engine.handle(), 1, 1);
    engine.add(1);
    engine.set(1, QNL_CONTROL_ANC_ENABLE, 1);
    EXPECT_TRUE(all_finite(1, 20));
}

TEST(AudioPath, MasterGainActsOnTheListenerAlone) {
    engine engine({1, 1, 1});
    engine.set(1, QNL_CONTROL_MASTER_GAIN, 0);
    engine.set(2, QNL_CONTROL_MASTER_GAIN, 50);
    engine.set(3, QNL_CONTROL_MASTER_GAIN, 5); // reads back as 4
    const samples full = centred(limited(block(1)));
    engine.push(1, block(1));
    EXPECT_TRUE(same_bits(scaled(full, 0.5F), engine.pull(2).samples));
    EXPECT_TRUE(same_bits(scaled(full, 4.0F / 100.0F), engine.pull(3).samples));
    engine.set(2, QNL_CONTROL_STEREO_BYPASS_ENABLE, 1);
    engine.push(1, block(1));
    EXPECT_TRUE(same_bits(centred(block(1)), engine.pull(2).samples)) << "bypass leaves the gain out";
}

TEST(AudioPath, MasterGainCountsTwiceTheOutputFrames) {
    // At 24 kHz and 240 frames the engine's planar block holds 2 x 480: the gain reaches the left side only,
    // so the mono fold adds half the left to all of the right.
    engine engine({1, 1}, {24000, 240, 1, false, 1});
    engine.set(2, QNL_CONTROL_MASTER_GAIN, 50);
    engine.push(1, samples(480, 1.0F));
    const float behind_the_resampler = 0.98F;
    EXPECT_NEAR(engine.pull(2).samples[200],
                (0.5F * side_gain + side_gain) * side_gain * behind_the_resampler, 1e-5F);
}

TEST(AudioPath, ShortsAndDoublesComeBackAsTheyWere) {
    const auto expect_unchanged = [](auto push, auto pull, const auto& input) {
        for (const bool interleaved : {false, true}) {
            plain_engine engine({2, 1}, {48000, 480, 2, interleaved, 1});
            auto output = input;
            output.assign(2 * frames, 99);
            EXPECT_EQ(push(engine.handle(), 1, 1, input.data(), frames), QNL_ERROR_NONE);
            EXPECT_EQ(pull(engine.handle(), 1, 2, output.data()), QNL_ERROR_NONE);
            EXPECT_EQ(input, output) << interleaved;
        }
    };
    std::vector<short> shorts = {-32768, 32767, 16384, -1, 1, 0, 12345, -12345};
    shorts.resize(2 * frames);
    expect_unchanged(qnl_input_audio_short, qnl_output_audio_short, shorts);
    const samples floats = noise(2 * frames, 1);
    expect_unchanged(qnl_input_audio_double, qnl_output_audio_double,
                     std::vector<double>(floats.begin(), floats.end()));
}

TEST(AudioPath, RefusalsComeInTheirOrder) {
    engine engine({1});
    engine.add(2, 1, QNL_PARTICIPANT_LISTENER_ONLY);
    engine.add(3, 1, QNL_PARTICIPANT_SOURCE_ONLY);
    engine.set(1, QNL_CONTROL_MUTE_ENABLE, 1);
    qnl_handle const handle = engine.handle();
    log_capture log;
    EXPECT_EQ(qnl_input_audio_float(handle, 1, 1, nullptr, 479), QNL_ERROR_DATA_LENGTH);
    EXPECT_EQ(qnl_input_audio_float(handle, 1, 1, nullptr, 480), QNL_ERROR_NONE) << "muted: not looked at";
    EXPECT_EQ(qnl_input_audio_float(handle, 1, 2, nullptr, 479), QNL_ERROR_DATA_LENGTH);
    EXPECT_EQ(qnl_input_audio_float(handle, 1, 2, nullptr, 480), QNL_ERROR_PARTICIPANT_TYPE);
    EXPECT_EQ(qnl_input_audio_float(handle, 1, 3, nullptr, 480), QNL_ERROR_DATA_NULL);
    EXPECT_EQ(qnl_output_audio_float(handle, 1, 3, nullptr), QNL_ERROR_PARTICIPANT_TYPE);
    EXPECT_EQ(qnl_output_audio_float(handle, 1, 1, nullptr), QNL_ERROR_DATA_NULL);
    const std::string wrong_count =
        "ERROR: the number of input frames 479 does not match required number of frames 480";
    EXPECT_THAT(
        log.take(),
        ElementsAre(wrong_count, wrong_count,
                    "WARNING: Cannot input audio to participant 2 in room 1 because it is LISTENER ONLY",
                    "ERROR: input buffer not initialized",
                    "ERROR: Participant 3 has no output because it is source only",
                    "ERROR: your output buffer is not initialized"));
}

TEST(WhoHearsWhom, FollowsTheWhisperRoomsAndSidebarsOfTheMomentOfThePush) {
    const std::tuple<int, int, int, int, float> table[] = {
        {0, 0, 0, 0, 1.0F}, {1, 0, 1, 0, 1.0F}, {1, 0, 2, 0, 0.0F}, {1, 0, 0, 0, 0.0F},
        {0, 1, 0, 1, 1.0F}, {0, 1, 0, 0, 0.0F}, {0, 0, 0, 1, 0.0F}, {0, 0, 1, 0, 0.25F},
        {0, 0, 1, 1, 0.0F}, {1, 1, 1, 0, 1.0F}, {1, 1, 0, 1, 0.0F}, {0, 2, 3, 2, 1.0F}};
    for (const auto& [talker_whisper, talker_sidebar, listener_whisper, listener_sidebar, gain] : table) {
        plain_engine engine({1, 1});
        engine.set(1, QNL_CONTROL_WHISPER_ROOM, talker_whisper);
        engine.set(1, QNL_CONTROL_SIDEBAR_ROOM, talker_sidebar);
        engine.set(2, QNL_CONTROL_WHISPER_ROOM, listener_whisper);
        engine.set(2, QNL_CONTROL_SIDEBAR_ROOM, listener_sidebar);
        engine.push(1, block(1));
        engine.set(1, QNL_CONTROL_SIDEBAR_ROOM, 99); // too late for this block
        const auto mix = engine.pull(2);
        const samples expected = gain > 0.0F ? centred(scaled(block(1), gain)) : samples(2 * frames);
        EXPECT_TRUE(same_bits(expected, mix.samples))
            << talker_whisper << talker_sidebar << listener_whisper << listener_sidebar;
        EXPECT_EQ(mix.code, gain > 0.0F ? QNL_ERROR_NONE : QNL_ERROR_NO_INPUT_AUDIO);
    }
}

TEST(Flush, DropsWhatIsQueuedOnBothSides) {
    plain_engine engine({1, 1, 1});
    for (const int id : {1, 2, 3})
        engine.push(id, block(id));
    engine.add(4, 1, QNL_PARTICIPANT_SOURCE_ONLY);
    for (const int id : {1, 4})
        EXPECT_EQ(qnl_flush_data(engine.handle(), 1, id), QNL_ERROR_NONE);
    EXPECT_EQ(engine.pull(1).code, QNL_ERROR_NO_INPUT_AUDIO) << "what it had not heard";
    EXPECT_TRUE(same_bits(centred(block(3)), engine.pull(2).samples)) << "what others had not heard of it";
    engine.push(1, block(4));
    EXPECT_TRUE(same_bits(centred(block(4)), engine.pull(2).samples)) << "the talker goes on";
}

} // namespace
