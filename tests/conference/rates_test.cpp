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

/// The middle of a loudspeaker's mix waits for frames of 1024, from call 17 on for three blocks of 480, and for the
/// filters of the sides.
constexpr double loudspeaker_delay = (3 * 480 + 512 + 1024) / 48000.0;
constexpr double loudspeaker_gain = 1.15 * 1.15;

double delay_in_seconds(int input_rate, int output_rate, qnl_device_types device) {
    const double into_the_engine = input_rate == 48000 ? 0.0 : 128.0 / input_rate;
    const double limiter = 9.0 / 48000.0;
    const double out_of_the_engine = output_rate == 48000 ? 0.0 : 128.0 / 48000.0;
    const double device_delay = device == QNL_DEVICE_SPEAKER ? loudspeaker_delay : 0.0;
    return into_the_engine + device_delay + limiter + out_of_the_engine;
}

double gain(int input_rate, int output_rate, qnl_device_types device) {
    return (input_rate == 48000 ? 1.0 : 0.98) * (output_rate == 48000 ? 1.0 : 0.98) *
           (device == QNL_DEVICE_SPEAKER ? loudspeaker_gain : 1.0);
}

/// What the talker says: sines that differ in pitch, level and sign. A mono talker says the left one.
double talk_at(int channel, double time) {
    return channel == 0 ? 0.4 * std::sin(2.0 * M_PI * 500.0 * time)
                        : -0.25 * std::sin(2.0 * M_PI * 700.0 * time);
}

/// What a channel of an output with `hearing` channels hears of a talker with `talking`.
double mix_at(int channel, int hearing, int talking, double time) {
    const double left = talking == 2 ? talk_at(0, time) : side_gain * talk_at(0, time);
    const double right = talking == 2 ? talk_at(1, time) : left;
    return hearing == 1 ? side_gain * (left + right) : channel == 0 ? left : right;
}

/// Lets participant 1 talk and participant 2 listen until all filters have settled, then checks two blocks of each
/// channel.
template <class Sample, class Push, class Pull>
void expect_the_talk(const qnl_library_configuration& format, int input_rate, int talking,
                     qnl_device_types device, Push push, Pull pull) {
    const int blocks = device == QNL_DEVICE_SPEAKER ? 24 : 12;
    constexpr double full_scale = std::is_same_v<Sample, short> ? 32768.0 : 1.0;
    // Samples of 16 bits that are cut twice cost the most. A delay wrong by one sample at 48000 Hz is at -24 dB.
    constexpr double limit_db = -70.0;
    const auto [rate, frames, hearing, interleaved, quality] = format;
    const int input_frames = input_rate * frames / rate;
    const auto place = [planar = !interleaved](int frame, int channel, int all_frames, int channels) {
        return static_cast<size_t>(planar ? channel * all_frames + frame : frame * channels + channel);
    };
    engine engine({}, format);
    ASSERT_EQ(engine.add(1, talking, QNL_PARTICIPANT_REGULAR, input_rate), QNL_ERROR_NONE);
    ASSERT_EQ(engine.add(2, 1, QNL_PARTICIPANT_LISTENER_ONLY, rate), QNL_ERROR_NONE);
    ASSERT_EQ(engine.set(2, QNL_CONTROL_DEVICE, device), QNL_ERROR_NONE);
    std::vector<Sample> talk(static_cast<size_t>(input_frames * talking));
    std::vector<Sample> mix(static_cast<size_t>(frames * hearing));
    for (int block = 0; block < blocks; ++block) {
        for (int frame = 0; frame < input_frames; ++frame)
            for (int channel = 0; channel < talking; ++channel)
                talk[place(frame, channel, input_frames, talking)] = static_cast<Sample>(
                    full_scale *
                    talk_at(channel, static_cast<double>(block * input_frames + frame) / input_rate));
        ASSERT_EQ(push(engine.handle(), engine::room, 1, talk.data(), input_frames), QNL_ERROR_NONE);
        ASSERT_EQ(pull(engine.handle(), engine::room, 2, mix.data()), QNL_ERROR_NONE);
        for (int channel = 0; channel < hearing && block >= blocks - 2; ++channel) {
            std::vector<float> expected;
            std::vector<float> heard;
            for (int frame = 0; frame < frames; ++frame) {
                const double time = static_cast<double>(block * frames + frame) / rate;
                expected.push_back(static_cast<float>(
                    gain(input_rate, rate, device) *
                    mix_at(channel, hearing, talking, time - delay_in_seconds(input_rate, rate, device))));
                heard.push_back(static_cast<float>(mix[place(frame, channel, frames, hearing)] / full_scale));
            }
            EXPECT_TRUE(error_below(expected, heard, limit_db))
                << "channel " << channel << " of " << hearing << " at " << rate << " Hz, talker with "
                << talking << " at " << input_rate << " Hz, device " << device << ", "
                << (interleaved ? "interleaved, " : "planar, ") << sizeof(Sample) << " bytes a sample";
        }
    }
}

TEST(Rates, EveryTalkerIsHeardInPitchInTimeAndInPlaceAtEveryOutputRate) {
    for (const int rate : {8000, 16000, 24000, 32000, 48000})
        for (const int input_rate : {8000, 16000, 24000, 32000, 44100, 48000})
            for (const int way : {0, 1, 2, 3, 4, 5, 6, 7}) {
                const int talking = 1 + way % 2;
                const qnl_library_configuration format{rate, rate / 100, 1 + way / 2 % 2, way >= 4, 1};
                expect_the_talk<short>(format, input_rate, talking, QNL_DEVICE_HEADPHONE,
                                       qnl_input_audio_short, qnl_output_audio_short);
                expect_the_talk<float>(format, input_rate, talking, QNL_DEVICE_HEADPHONE,
                                       qnl_input_audio_float, qnl_output_audio_float);
                expect_the_talk<double>(format, input_rate, talking, QNL_DEVICE_HEADPHONE,
                                        qnl_input_audio_double, qnl_output_audio_double);
            }
}

TEST(Rates, WhatIsInTheMiddleIsHeardOnLoudspeakersInTimeAtEveryOutputRate) {
    for (const int rate : {8000, 16000, 24000, 32000, 48000})
        for (const int way : {0, 1, 2, 3})
            expect_the_talk<float>({rate, rate / 100, 1 + way % 2, way >= 2, 1}, 16000, 1, QNL_DEVICE_SPEAKER,
                                   qnl_input_audio_float, qnl_output_audio_float);
}

TEST(Rates, ABlockOf683FramesStaysInsideTheHostsBuffers) {
    for (const int channels : {1, 2}) {
        engine engine({}, {32000, 683, channels, false, 1});
        for (const int id : {1, 2})
            ASSERT_EQ(engine.add(id, channels, QNL_PARTICIPANT_REGULAR, 32000), QNL_ERROR_NONE);
        const std::vector<float> block(static_cast<size_t>(683 * channels), 0.5F);
        for (int period = 0; period < 3; ++period)
            ASSERT_EQ(engine.push(1, block, 683), QNL_ERROR_NONE);
        engine.pull(2);
        EXPECT_NEAR(engine.pull(2).samples[400], 0.5 * 0.98 * 0.98, 1e-4) << "amid a block the talk is whole";
    }
}

} // namespace
