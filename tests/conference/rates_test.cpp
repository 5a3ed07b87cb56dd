// Every rate of talkers and listeners through the exported functions.
#include "kit/compare.h"
#include "kit/engine.h"

#include <cmath>
#include <gtest/gtest.h>
#include <type_traits>
#include <vector>

namespace {

using namespace test_kit;

constexpr double side_gain = 0.70710677;

double delay_in_seconds(int input_rate, int output_rate) {
    const double into_the_engine = input_rate == 48000 ? 0.0 : 128.0 / input_rate;
    const double limiter = 9.0 / 48000.0;
    const double out_of_the_engine = output_rate == 48000 ? 0.0 : 128.0 / 48000.0;
    return into_the_engine + limiter + out_of_the_engine;
}

double gain(int input_rate, int output_rate) {
    return (input_rate == 48000 ? 1.0 : 0.98) * (output_rate == 48000 ? 1.0 : 0.98);
}

/// What the talker says: sines that differ in pitch, level and sign. A mono talker says the left one.
double talk_at(int channel, double time) {
    return channel == 0 ? 0.4 * std::sin(2.0 * M_PI * 500.0 * time)
                        : -0.25 * std::sin(2.0 * M_PI * 700.0 * time);
}

/// What channel `channel` of an output hears of a talker with `talking` channels.
double mix_at(int channel, int hearing, int talking, double time) {
    const double left = talking == 2 ? talk_at(0, time) : side_gain * talk_at(0, time);
    const double right = talking == 2 ? talk_at(1, time) : left;
    if (hearing == 1)
        return side_gain * (left + right);
    return channel == 0 ? left : right;
}

qnl_error_code push(qnl_handle handle, const std::vector<short>& block, int frames) {
    return qnl_input_audio_short(handle, engine::room, 1, block.data(), frames);
}
qnl_error_code push(qnl_handle handle, const std::vector<float>& block, int frames) {
    return qnl_input_audio_float(handle, engine::room, 1, block.data(), frames);
}
qnl_error_code push(qnl_handle handle, const std::vector<double>& block, int frames) {
    return qnl_input_audio_double(handle, engine::room, 1, block.data(), frames);
}
qnl_error_code pull(qnl_handle handle, std::vector<short>& block) {
    return qnl_output_audio_short(handle, engine::room, 2, block.data());
}
qnl_error_code pull(qnl_handle handle, std::vector<float>& block) {
    return qnl_output_audio_float(handle, engine::room, 2, block.data());
}
qnl_error_code pull(qnl_handle handle, std::vector<double>& block) {
    return qnl_output_audio_double(handle, engine::room, 2, block.data());
}

/// Holds a conference of participant 1, who talks, and 2, who listens, until all filters have settled, and checks
/// the last two blocks of each output channel.
template <class Sample>
void expect_the_talk(const qnl_library_configuration& format, int input_rate, int talking) {
    constexpr int blocks = 12;
    constexpr double full_scale = std::is_same_v<Sample, short> ? 32768.0 : 1.0;
    const auto [rate, frames, hearing, interleaved, quality] = format;
    const int input_frames = input_rate * frames / rate;
    const auto place = [interleaved = interleaved](int frame, int channel, int all_frames, int channels) {
        return static_cast<size_t>(interleaved ? frame * channels + channel : channel * all_frames + frame);
    };
    engine engine({}, format);
    ASSERT_EQ(engine.add(1, talking, QNL_PARTICIPANT_REGULAR, input_rate), QNL_ERROR_NONE);
    ASSERT_EQ(engine.add(2, 1, QNL_PARTICIPANT_LISTENER_ONLY, rate), QNL_ERROR_NONE);
    std::vector<Sample> talk(static_cast<size_t>(input_frames * talking));
    std::vector<Sample> mix(static_cast<size_t>(frames * hearing));
    std::vector<std::vector<float>> expected(2);
    std::vector<std::vector<float>> heard(2);
    for (int block = 0; block < blocks; ++block) {
        for (int frame = 0; frame < input_frames; ++frame)
            for (int channel = 0; channel < talking; ++channel)
                talk[place(frame, channel, input_frames, talking)] = static_cast<Sample>(
                    full_scale *
                    talk_at(channel, static_cast<double>(block * input_frames + frame) / input_rate));
        ASSERT_EQ(push(engine.handle(), talk, input_frames), QNL_ERROR_NONE);
        ASSERT_EQ(pull(engine.handle(), mix), QNL_ERROR_NONE);
        for (int frame = 0; frame < frames && block >= blocks - 2; ++frame) {
            const double time =
                static_cast<double>(block * frames + frame) / rate - delay_in_seconds(input_rate, rate);
            for (int channel = 0; channel < hearing; ++channel) {
                const double level = gain(input_rate, rate) * mix_at(channel, hearing, talking, time);
                expected[static_cast<size_t>(channel)].push_back(static_cast<float>(level));
                heard[static_cast<size_t>(channel)].push_back(
                    static_cast<float>(mix[place(frame, channel, frames, hearing)] / full_scale));
            }
        }
    }
    // Samples of 16 bits that are cut twice cost the most. One sample of delay at 48000 Hz is an error of -24 dB.
    constexpr double limit_db = -70.0;
    for (size_t channel = 0; channel < 2; ++channel)
        EXPECT_TRUE(error_below(expected[channel], heard[channel], limit_db))
            << "channel " << channel << " of " << hearing << " at " << rate << " Hz, talker with " << talking
            << " at " << input_rate << " Hz, " << (interleaved ? "interleaved" : "planar") << ", "
            << sizeof(Sample) << " bytes a sample";
}

TEST(Rates, EveryTalkerIsHeardInPitchInTimeAndInPlaceAtEveryOutputRate) {
    for (const int rate : {8000, 16000, 24000, 32000, 48000})
        for (const int hearing : {1, 2})
            for (const bool interleaved : {false, true})
                for (const int input_rate : {8000, 16000, 24000, 32000, 44100, 48000})
                    for (const int talking : {1, 2}) {
                        const qnl_library_configuration format{rate, rate / 100, hearing, interleaved, 1};
                        expect_the_talk<short>(format, input_rate, talking);
                        expect_the_talk<float>(format, input_rate, talking);
                        expect_the_talk<double>(format, input_rate, talking);
                    }
}

TEST(Rates, ABlockOf683FramesStaysInsideTheHostsBuffers) {
    for (const int channels : {1, 2}) {
        engine engine({}, {32000, 683, channels, false, 1});
        ASSERT_EQ(engine.add(1, channels, QNL_PARTICIPANT_REGULAR, 32000), QNL_ERROR_NONE);
        ASSERT_EQ(engine.add(2, channels, QNL_PARTICIPANT_REGULAR, 32000), QNL_ERROR_NONE);
        const std::vector<float> block(static_cast<size_t>(683 * channels), 0.5F);
        pulled_block mix;
        for (int period = 0; period < 3; ++period) {
            ASSERT_EQ(engine.push(1, block, 683), QNL_ERROR_NONE);
            mix = engine.pull(2);
            ASSERT_EQ(mix.code, QNL_ERROR_NONE);
        }
        EXPECT_NEAR(mix.samples[300], 0.5 * 0.98 * 0.98, 1e-4);
    }
}

} // namespace
