// The two roads of a block, through the exported functions.
#include "kit/compare.h"
#include "kit/engine.h"
#include "kit/log_capture.h"
#include "kit/signals.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <limits>
#include <optional>
#include <vector>

namespace {

using namespace test_kit;
using namespace testing;
using samples = std::vector<float>;

constexpr float side_gain = 0.70710677F;
constexpr size_t frames = 480;
constexpr qnl_library_configuration mono_output{48000, 480, 1, false, 1};

samples scaled(samples x, float gain) {
    for (float& sample : x)
        sample *= gain;
    return x;
}

samples sum(samples x, const samples& y) {
    for (size_t i = 0; i < x.size(); ++i)
        x[i] += y[i];
    return x;
}

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
    constexpr std::ptrdiff_t latency = 9;
    samples late(x.size());
    std::copy(x.begin(), x.end() - latency, late.begin() + latency);
    return late;
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
    std::vector<short> shorts(2 * frames, 99);
    std::vector<double> doubles(2 * frames, 99.0);
    EXPECT_EQ(qnl_output_audio_short(engine.handle(), 1, 1, shorts.data()), QNL_ERROR_NO_INPUT_AUDIO);
    EXPECT_EQ(qnl_output_audio_double(engine.handle(), 1, 1, doubles.data()), QNL_ERROR_NO_INPUT_AUDIO);
    EXPECT_THAT(shorts, Each(0));
    EXPECT_THAT(doubles, Each(0.0));
}

TEST(AudioPath, StereoKeepsItsSidesAndFoldsForAMonoListener) {
    plain_engine mono({2, 1, 1}, mono_output);
    mono.push(1, planar(block(1), block(2)), frames);
    EXPECT_TRUE(same_bits(scaled(sum(block(1), block(2)), side_gain), mono.pull(2).samples));
    mono.push(3, block(3));
    EXPECT_TRUE(error_below(block(3), mono.pull(1).samples, -130.0))
        << "a mono talker comes back to unity within rounding";
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
        EXPECT_TRUE(same_bits(planar(left, right), heard())) << "bypassed";
        engine.set(1, enhancement, 1);
        EXPECT_TRUE(same_bits(planar(left, right), heard()))
            << "bypassed, whatever else is on: " << enhancement;
        engine.set(1, QNL_CONTROL_STEREO_BYPASS_ENABLE, 0);
        for (int i = 0; i < 3; ++i)
            heard(); // past the delay of any stage
        const samples folded = heard();
        const samples first(folded.begin(), folded.begin() + frames);
        const samples second(folded.begin() + frames, folded.end());
        EXPECT_GT(peak(first), 0.0F);
        if (enhancement == QNL_CONTROL_MIXING_3D_ENABLE) {
            EXPECT_TRUE(same_bits(scaled(sum(left, right), 0.5F), first));
            EXPECT_TRUE(same_bits(right, second)) << "no stage copies the first channel over it";
        } else {
            EXPECT_TRUE(same_bits(first, second)) << enhancement;
        }
    }
}

/// By how many frames speech is late at a listener without stages of its own, with some of the talker's controls on.
std::optional<size_t> latency_of(std::initializer_list<qnl_audio_control> controls, int32_t block_frames) {
    plain_engine engine({1, 1}, {48000, block_frames, 1, false, 1});
    engine.set(1, QNL_CONTROL_STEREO_BYPASS_ENABLE, 0);
    for (const qnl_audio_control control : controls)
        engine.set(1, control, 1);
    const auto length = static_cast<size_t>(block_frames);
    const samples voice = speech_like(40 * length, 7);
    samples heard;
    for (size_t start = 0; start < voice.size(); start += length) {
        engine.push(1, samples(&voice[start], &voice[start] + length));
        const samples mix = engine.pull(2).samples;
        heard.insert(heard.end(), mix.begin(), mix.end());
    }
    return find_delay(voice, heard, 6000);
}

TEST(AudioPath, EachEnhancementIsLateByItsOwnLatencyInItsPlace) {
    EXPECT_EQ(latency_of({}, 480), 0U);
    EXPECT_EQ(latency_of({QNL_CONTROL_ANC_ENABLE}, 480), 960U) << "both cleaners";
    EXPECT_EQ(latency_of({QNL_CONTROL_ANC_ENABLE}, 512), 1984U);
    EXPECT_EQ(latency_of({QNL_CONTROL_ANC_ENABLE}, 1024), 3008U);
    EXPECT_EQ(latency_of({QNL_CONTROL_AGC_ENABLE}, 480), 600U) << "the analysis adds none";
    EXPECT_EQ(latency_of({QNL_CONTROL_AGC_ENABLE}, 1024), 640U);
    EXPECT_EQ(latency_of({QNL_CONTROL_AUTO_EQ_ENABLE}, 960), 512U);
    const auto all =
        latency_of({QNL_CONTROL_ANC_ENABLE, QNL_CONTROL_AGC_ENABLE, QNL_CONTROL_AUTO_EQ_ENABLE}, 960);
    EXPECT_NEAR(static_cast<double>(all.value_or(0)), 960 + 512 + 600, 2)
        << "a reshaped voice leans a little";
}

TEST(AudioPath, MasterGainActsOnTheListenerAlone) {
    engine engine({1, 1, 1});
    engine.set(1, QNL_CONTROL_MASTER_GAIN, 0);
    engine.set(2, QNL_CONTROL_MASTER_GAIN, 50);
    engine.set(3, QNL_CONTROL_MASTER_GAIN, 5); // reads back as 4
    const samples side = scaled(block(1), side_gain);
    engine.push(1, block(1));
    EXPECT_TRUE(same_bits(scaled(planar(limited(side), limited(side)), 0.5F), engine.pull(2).samples));
    EXPECT_TRUE(
        same_bits(scaled(planar(limited(side), limited(side)), 4.0F / 100.0F), engine.pull(3).samples));
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

TEST(AudioPath, TheTwoShortRoadsDiffer) {
    std::vector<short> input = {-32768, 32767, 16384, -1, 1, 0, 12345, -12345};
    input.resize(2 * frames);
    const auto through = [&](bool interleaved) {
        plain_engine engine({2, 1}, {48000, 480, 2, interleaved, 1});
        EXPECT_EQ(qnl_input_audio_short(engine.handle(), 1, 1, input.data(), frames), QNL_ERROR_NONE);
        std::vector<short> output(2 * frames);
        EXPECT_EQ(qnl_output_audio_short(engine.handle(), 1, 2, output.data()), QNL_ERROR_NONE);
        return output;
    };
    EXPECT_TRUE(same_bits(input, through(false))) << "planar: exact there and back";
    std::vector<short> expected(2 * frames);
    std::transform(input.begin(), input.end(), expected.begin(), [](short sample) {
        const float scaled_up = static_cast<float>(sample) * 3.0518e-5F * 32768.0F;
        return static_cast<short>(std::clamp(scaled_up, -32768.0F, 32767.0F));
    });
    EXPECT_TRUE(same_bits(expected, through(true))) << "interleaved: a factor near 1/32768, then truncated";
}

TEST(AudioPath, NonFiniteSamplesStayInTheirBlockAndClampTo16Bits) {
    plain_engine engine({1, 1}, mono_output);
    samples wild(frames, 0.25F);
    wild[0] = std::numeric_limits<float>::quiet_NaN();
    wild[1] = std::numeric_limits<float>::infinity();
    wild[2] = -std::numeric_limits<float>::infinity();
    wild[3] = 1e30F;
    std::vector<short> output(frames);
    engine.push(1, wild);
    qnl_output_audio_short(engine.handle(), 1, 2, output.data());
    output.resize(5);
    EXPECT_THAT(output, ElementsAre(0, 32767, -32768, 32767, 8192));
    output.resize(frames);
    engine.push(1, samples(frames, 0.25F));
    qnl_output_audio_short(engine.handle(), 1, 2, output.data());
    EXPECT_THAT(output, Each(8192));
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

TEST(WhoHearsWhom, FollowsWhisperRoomsAndSidebars) {
    struct people {
        int talker_whisper, talker_sidebar, listener_whisper, listener_sidebar;
        float gain;
    };
    const std::vector<people> table = {{0, 0, 0, 0, 1.0F}, {1, 0, 1, 0, 1.0F},  {1, 0, 2, 0, 0.0F},
                                       {1, 0, 0, 0, 0.0F}, {0, 1, 0, 1, 1.0F},  {0, 1, 0, 0, 0.0F},
                                       {0, 0, 0, 1, 0.0F}, {0, 0, 1, 0, 0.25F}, {0, 0, 1, 1, 0.0F},
                                       {1, 1, 1, 0, 1.0F}, {1, 1, 0, 1, 0.0F},  {0, 2, 3, 2, 1.0F}};
    for (const auto& [talker_whisper, talker_sidebar, listener_whisper, listener_sidebar, gain] : table) {
        plain_engine engine({1, 1});
        engine.set(1, QNL_CONTROL_WHISPER_ROOM, talker_whisper);
        engine.set(1, QNL_CONTROL_SIDEBAR_ROOM, talker_sidebar);
        engine.set(2, QNL_CONTROL_WHISPER_ROOM, listener_whisper);
        engine.set(2, QNL_CONTROL_SIDEBAR_ROOM, listener_sidebar);
        engine.push(1, block(1));
        const auto mix = engine.pull(2);
        const samples expected = gain > 0.0F ? centred(scaled(block(1), gain)) : samples(2 * frames);
        EXPECT_TRUE(same_bits(expected, mix.samples))
            << talker_whisper << talker_sidebar << listener_whisper << listener_sidebar;
        EXPECT_EQ(mix.code, gain > 0.0F ? QNL_ERROR_NONE : QNL_ERROR_NO_INPUT_AUDIO);
    }
}

TEST(WhoHearsWhom, IsDecidedWhenTheBlockIsPushed) {
    engine engine({1, 1});
    engine.push(1, block(1));
    engine.set(1, QNL_CONTROL_SIDEBAR_ROOM, 1);
    engine.push(1, block(2));
    EXPECT_EQ(engine.pull(2).code, QNL_ERROR_NONE);
    EXPECT_EQ(engine.pull(2).code, QNL_ERROR_NO_INPUT_AUDIO);
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
