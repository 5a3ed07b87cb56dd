// The two roads of a block, through the exported functions.
#include "kit/compare.h"
#include "kit/engine.h"
#include "kit/log_capture.h"
#include "kit/signals.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

using test_kit::engine;
using test_kit::log_capture;
using test_kit::log_entry;
using test_kit::planar;
using test_kit::pulled_block;
using test_kit::same_bits;
using testing::Each;
using testing::ElementsAre;

constexpr float side_gain = 0.70710677F;
constexpr size_t frames = 480;

std::vector<float> scaled(std::vector<float> x, float gain) {
    for (float& sample : x)
        sample *= gain;
    return x;
}

std::vector<float> sum(std::vector<float> x, const std::vector<float>& y) {
    for (size_t i = 0; i < x.size(); ++i)
        x[i] += y[i];
    return x;
}

std::vector<float> block(std::uint32_t seed) {
    return test_kit::noise(frames, seed, 0.5F);
}

qnl_library_configuration mono_output() {
    return {48000, 480, 1, false, 1};
}

TEST(AudioPath, EverybodyHearsTheSumOfAllOthers) {
    engine engine;
    for (const int id : {1, 2, 3})
        engine.add(id);
    for (const int id : {1, 2, 3})
        EXPECT_EQ(engine.push(id, block(static_cast<std::uint32_t>(id))), QNL_ERROR_NONE);
    const auto side = sum(scaled(block(1), side_gain), scaled(block(2), side_gain));
    const pulled_block mix = engine.pull(3);
    EXPECT_EQ(mix.code, QNL_ERROR_NONE);
    EXPECT_TRUE(same_bits(planar(side, side), mix.samples));
}

TEST(AudioPath, NobodyToHearGivesSilenceAndItsCode) {
    engine engine;
    engine.add(1);
    log_capture log(QNL_LOG_DEBUG);
    for (int period = 0; period < 3; ++period) {
        engine.push(1, block(1));
        const pulled_block silence = engine.pull(1);
        EXPECT_EQ(silence.code, QNL_ERROR_NO_INPUT_AUDIO);
        EXPECT_THAT(silence.samples, Each(0.0F));
    }
    EXPECT_EQ(log.take().back(),
              (log_entry{QNL_LOG_DEBUG, "There was no input audio for this participant 1 to process"}));
    std::vector<short> shorts(2 * frames, 99);
    std::vector<double> doubles(2 * frames, 99.0);
    EXPECT_EQ(qnl_output_audio_short(engine.handle(), 1, 1, shorts.data()), QNL_ERROR_NO_INPUT_AUDIO);
    EXPECT_EQ(qnl_output_audio_double(engine.handle(), 1, 1, doubles.data()), QNL_ERROR_NO_INPUT_AUDIO);
    EXPECT_THAT(shorts, Each(0));
    EXPECT_THAT(doubles, Each(0.0));
}

TEST(AudioPath, StereoKeepsItsSidesAndMonoComesAtUnity) {
    const auto left = block(1);
    const auto right = block(2);
    engine stereo;
    stereo.add(1, 2);
    stereo.add(2);
    stereo.push(1, planar(left, right), frames);
    EXPECT_TRUE(same_bits(planar(left, right), stereo.pull(2).samples));

    engine mono(mono_output());
    mono.add(1, 2);
    mono.add(2);
    mono.add(3);
    mono.push(1, planar(left, right), frames);
    EXPECT_TRUE(same_bits(scaled(sum(left, right), side_gain), mono.pull(2).samples));
    mono.push(3, left);
    mono.pull(1);
    EXPECT_TRUE(test_kit::error_below(sum(left, scaled(sum(left, right), 0.0F)),
                                      (mono.push(3, left), mono.pull(1).samples), -130.0))
        << "a mono talker at a mono listener comes back to unity within rounding";
}

TEST(AudioPath, AnyEnhancementFoldsStereoInputUnlessBypassed) {
    const auto left = block(1);
    const auto right = block(2);
    engine engine;
    engine.add(1, 2);
    engine.add(2);
    const auto heard = [&] {
        engine.push(1, planar(left, right), frames);
        return engine.pull(2).samples;
    };
    engine.set(1, QNL_CONTROL_MIXING_3D_ENABLE, 1);
    // Channel 1 stays the right side: the 3D control brings no stage that would copy channel 0 over it.
    EXPECT_TRUE(same_bits(planar(scaled(sum(left, right), 0.5F), right), heard()));
    engine.set(1, QNL_CONTROL_STEREO_BYPASS_ENABLE, 1);
    EXPECT_TRUE(same_bits(planar(left, right), heard()));
}

TEST(AudioPath, MasterGainActsOnTheListenerAlone) {
    engine engine;
    for (const int id : {1, 2, 3})
        engine.add(id);
    engine.set(2, QNL_CONTROL_MASTER_GAIN, 50);
    engine.set(3, QNL_CONTROL_MASTER_GAIN, 5); // reads back as 4
    engine.push(1, block(1));
    const auto side = scaled(block(1), side_gain);
    EXPECT_TRUE(same_bits(scaled(planar(side, side), 0.5F), engine.pull(2).samples));
    EXPECT_TRUE(same_bits(scaled(planar(side, side), 4.0F / 100.0F), engine.pull(3).samples));
    engine.set(2, QNL_CONTROL_STEREO_BYPASS_ENABLE, 1);
    engine.push(1, block(1));
    EXPECT_TRUE(same_bits(planar(side, side), engine.pull(2).samples)) << "bypass leaves the gain out";
}

TEST(AudioPath, MasterGainCountsTwiceTheOutputFrames) {
    // At 24 kHz and 240 frames the engine's planar block holds 2 x 480: the gain reaches the left side only,
    // so the mono fold adds half the left to all of the right.
    engine engine({24000, 240, 1, false, 1});
    engine.add(1, 1, QNL_PARTICIPANT_REGULAR, 48000);
    engine.add(2, 1, QNL_PARTICIPANT_REGULAR, 48000);
    engine.set(2, QNL_CONTROL_MASTER_GAIN, 50);
    engine.push(1, std::vector<float>(480, 1.0F));
    const pulled_block mix = engine.pull(2);
    EXPECT_FLOAT_EQ(mix.samples[100], (0.5F * side_gain + side_gain) * side_gain);
}

TEST(AudioPath, TheTwoShortRoadsDiffer) {
    const std::vector<short> input = {-32768, 32767, 16384, -1, 1, 0, 12345, -12345};
    std::vector<short> full(2 * frames, 0);
    std::copy(input.begin(), input.end(), full.begin());
    const auto through = [&](bool interleaved) {
        engine engine({48000, 480, 2, interleaved, 1});
        engine.add(1, 2);
        engine.add(2);
        EXPECT_EQ(qnl_input_audio_short(engine.handle(), 1, 1, full.data(), frames), QNL_ERROR_NONE);
        std::vector<short> output(2 * frames);
        EXPECT_EQ(qnl_output_audio_short(engine.handle(), 1, 2, output.data()), QNL_ERROR_NONE);
        return output;
    };
    EXPECT_TRUE(same_bits(full, through(false))) << "planar: exact there and back";
    std::vector<short> expected(2 * frames);
    std::transform(full.begin(), full.end(), expected.begin(), [](short sample) {
        const float scaled_up = static_cast<float>(sample) * 3.0518e-5F * 32768.0F;
        return static_cast<short>(std::clamp(scaled_up, -32768.0F, 32767.0F));
    });
    EXPECT_TRUE(same_bits(expected, through(true))) << "interleaved: a factor near 1/32768, then truncated";
}

TEST(AudioPath, OneHostsLayoutGivesTheSameMixInEveryType) {
    const auto left = block(5);
    const auto right = block(6);
    engine engine({48000, 480, 2, true, 1});
    engine.add(1, 2);
    engine.add(2);
    std::vector<float> floats(2 * frames);
    for (size_t i = 0; i < frames; ++i) {
        floats[2 * i] = left[i];
        floats[2 * i + 1] = right[i];
    }
    const std::vector<double> doubles(floats.begin(), floats.end());
    std::vector<double> output(2 * frames);
    EXPECT_EQ(qnl_input_audio_double(engine.handle(), 1, 1, doubles.data(), frames), QNL_ERROR_NONE);
    EXPECT_EQ(qnl_output_audio_double(engine.handle(), 1, 2, output.data()), QNL_ERROR_NONE);
    EXPECT_TRUE(same_bits(doubles, output));
    engine.push(1, floats, frames);
    EXPECT_TRUE(same_bits(floats, engine.pull(2).samples));
}

TEST(AudioPath, NonFiniteSamplesStayInTheirBlockAndClampTo16Bits) {
    engine engine(mono_output());
    engine.add(1);
    engine.add(2);
    std::vector<float> wild(frames, 0.25F);
    wild[0] = std::numeric_limits<float>::quiet_NaN();
    wild[1] = std::numeric_limits<float>::infinity();
    wild[2] = -std::numeric_limits<float>::infinity();
    wild[3] = 1e30F;
    engine.push(1, wild);
    std::vector<short> output(frames);
    qnl_output_audio_short(engine.handle(), 1, 2, output.data());
    EXPECT_THAT(std::vector<short>(output.begin(), output.begin() + 5),
                ElementsAre(0, 32767, -32768, 32767, 8192));
    engine.push(1, std::vector<float>(frames, 0.25F));
    qnl_output_audio_short(engine.handle(), 1, 2, output.data());
    EXPECT_THAT(output, Each(8192));
}

TEST(AudioPath, RefusalsComeInTheirOrder) {
    engine engine;
    engine.add(1);
    engine.add(2, 1, QNL_PARTICIPANT_LISTENER_ONLY);
    engine.add(3, 1, QNL_PARTICIPANT_SOURCE_ONLY);
    engine.set(1, QNL_CONTROL_MUTE_ENABLE, 1);
    qnl_handle const handle = engine.handle();
    log_capture log(QNL_LOG_WARNING);
    EXPECT_EQ(qnl_input_audio_float(handle, 1, 1, nullptr, 479), QNL_ERROR_DATA_LENGTH);
    EXPECT_EQ(qnl_input_audio_float(handle, 1, 1, nullptr, 480), QNL_ERROR_NONE) << "muted: not looked at";
    EXPECT_EQ(qnl_input_audio_float(handle, 1, 2, nullptr, 479), QNL_ERROR_DATA_LENGTH);
    EXPECT_EQ(qnl_input_audio_float(handle, 1, 2, nullptr, 480), QNL_ERROR_PARTICIPANT_TYPE);
    EXPECT_EQ(qnl_input_audio_float(handle, 1, 3, nullptr, 480), QNL_ERROR_DATA_NULL);
    EXPECT_EQ(qnl_output_audio_float(handle, 1, 3, nullptr), QNL_ERROR_PARTICIPANT_TYPE);
    EXPECT_EQ(qnl_output_audio_float(handle, 1, 1, nullptr), QNL_ERROR_DATA_NULL);
    EXPECT_THAT(
        log.take(),
        ElementsAre(log_entry{QNL_LOG_ERROR,
                              "the number of input frames 479 does not match required number of frames 480"},
                    log_entry{QNL_LOG_ERROR,
                              "the number of input frames 479 does not match required number of frames 480"},
                    log_entry{QNL_LOG_WARNING,
                              "Cannot input audio to participant 2 in room 1 because it is LISTENER ONLY"},
                    log_entry{QNL_LOG_ERROR, "input buffer not initialized"},
                    log_entry{QNL_LOG_ERROR, "Participant 3 has no output because it is source only"},
                    log_entry{QNL_LOG_ERROR, "your output buffer is not initialized"}));
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
        engine engine;
        engine.add(1);
        engine.add(2);
        engine.set(1, QNL_CONTROL_WHISPER_ROOM, talker_whisper);
        engine.set(1, QNL_CONTROL_SIDEBAR_ROOM, talker_sidebar);
        engine.set(2, QNL_CONTROL_WHISPER_ROOM, listener_whisper);
        engine.set(2, QNL_CONTROL_SIDEBAR_ROOM, listener_sidebar);
        engine.push(1, block(1));
        const pulled_block mix = engine.pull(2);
        const auto side = scaled(scaled(block(1), gain), side_gain);
        EXPECT_TRUE(same_bits(gain > 0.0F ? planar(side, side) : std::vector<float>(2 * frames), mix.samples))
            << talker_whisper << talker_sidebar << listener_whisper << listener_sidebar;
        EXPECT_EQ(mix.code, gain > 0.0F ? QNL_ERROR_NONE : QNL_ERROR_NO_INPUT_AUDIO);
    }
}

TEST(WhoHearsWhom, IsDecidedWhenTheBlockIsPushed) {
    engine engine;
    engine.add(1);
    engine.add(2);
    engine.push(1, block(1));
    engine.set(1, QNL_CONTROL_SIDEBAR_ROOM, 1);
    engine.push(1, block(2));
    EXPECT_EQ(engine.pull(2).code, QNL_ERROR_NONE);
    EXPECT_EQ(engine.pull(2).code, QNL_ERROR_NO_INPUT_AUDIO);
}

TEST(Flush, DropsWhatIsQueuedOnBothSides) {
    engine engine;
    for (const int id : {1, 2, 3})
        engine.add(id);
    for (const int id : {1, 2, 3})
        engine.push(id, block(static_cast<std::uint32_t>(id)));
    EXPECT_EQ(qnl_flush_data(engine.handle(), 1, 1), QNL_ERROR_NONE);
    EXPECT_EQ(engine.pull(1).code, QNL_ERROR_NO_INPUT_AUDIO) << "what it had not heard";
    const auto side = scaled(block(3), side_gain);
    EXPECT_TRUE(same_bits(planar(side, side), engine.pull(2).samples)) << "what others had not heard of it";
    engine.push(1, block(4));
    EXPECT_EQ(engine.pull(2).code, QNL_ERROR_NONE) << "the talker goes on";
}

} // namespace
