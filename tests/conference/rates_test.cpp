// Every rate of talkers and listeners through the exported functions.
#include "kit/host.h"

namespace {

using namespace test_kit;

constexpr double side_gain = 0.70710677;

/// The middle of a loudspeaker's mix waits for frames of 1024, from call 17 on for three blocks of 480, and for the
/// filters of the sides.
constexpr double loudspeaker_delay = (3 * 480 + 512 + 1024) / 48000.0;
constexpr double loudspeaker_gain = 1.15 * 1.15;

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

/// Lets participant 1 talk and participant 2 listen until all filters have settled, then checks a block.
void expect_the_talk(const qnl_library_configuration& format, int input_rate, int talking,
                     qnl_device_types device) {
    const auto [rate, frames, hearing, interleaved, quality] = format;
    SCOPED_TRACE(testing::Message() << hearing << " at " << rate << " Hz of " << talking << " at "
                                    << input_rate << " Hz, device " << device << ", interleaved "
                                    << interleaved);
    constexpr int blocks = 24;
    const int input_frames = input_rate * frames / rate;
    const bool loud = device == QNL_DEVICE_SPEAKER;
    const double delay = (input_rate == 48000 ? 0.0 : 128.0 / input_rate) + 9.0 / 48000.0 +
                         (rate == 48000 ? 0.0 : 128.0 / 48000.0) + (loud ? loudspeaker_delay : 0.0);
    const double gain =
        (input_rate == 48000 ? 1.0 : 0.98) * (rate == 48000 ? 1.0 : 0.98) * (loud ? loudspeaker_gain : 1.0);
    /// A whole block of the host: the frames of each channel from `start` on.
    const auto block_of = [planar = !interleaved](int count, int channels, int start, auto value_at) {
        samples block(static_cast<size_t>(count * channels));
        for (int frame = 0; frame < count; ++frame)
            for (int channel = 0; channel < channels; ++channel)
                block[planar ? channel * count + frame : frame * channels + channel] =
                    static_cast<float>(value_at(channel, start + frame));
        return block;
    };
    engine engine({}, format);
    ASSERT_EQ(engine.add(1, talking, QNL_PARTICIPANT_REGULAR, input_rate), QNL_ERROR_NONE);
    ASSERT_EQ(engine.add(2, 1, QNL_PARTICIPANT_LISTENER_ONLY, rate), QNL_ERROR_NONE);
    ASSERT_EQ(engine.set(2, QNL_CONTROL_DEVICE, device), QNL_ERROR_NONE);
    samples heard;
    for (int block = 0; block < blocks; ++block) {
        engine.push(1,
                    block_of(input_frames, talking, block * input_frames,
                             [&](int channel, double frame) { return talk_at(channel, frame / input_rate); }),
                    input_frames);
        heard = engine.pull(2).samples;
    }
    const samples expected =
        block_of(frames, hearing, (blocks - 1) * frames,
                 [&, rate = rate, hearing = hearing](int channel, double frame) {
                     return gain * mix_at(channel, hearing, talking, frame / rate - delay);
                 });
    EXPECT_TRUE(error_below(expected, heard, -70.0))
        << "a delay wrong by one sample at 48000 Hz is at -24 dB";
}

TEST(Rates, EveryTalkerIsHeardInPitchInTimeAndInPlaceAtEveryOutputRate) {
    for (const int rate : {8000, 16000, 24000, 32000, 48000})
        for (const int way : {0, 1, 2, 3}) {
            const qnl_library_configuration format{rate, rate / 100, 1 + way % 2, way >= 2, 1};
            for (const int input_rate : {8000, 16000, 24000, 32000, 44100, 48000})
                for (const int talking : {1, 2})
                    expect_the_talk(format, input_rate, talking, QNL_DEVICE_HEADPHONE);
            expect_the_talk(format, 16000, 1, QNL_DEVICE_SPEAKER);
        }
}

TEST(Rates, ABlockOf683FramesStaysInsideTheHostsBuffers) {
    for (const int channels : {1, 2}) {
        engine engine({}, {32000, 683, channels, false, 1});
        for (const int id : {1, 2})
            ASSERT_EQ(engine.add(id, channels, QNL_PARTICIPANT_REGULAR, 32000), QNL_ERROR_NONE);
        const samples block(static_cast<size_t>(683 * channels), 0.5F);
        for (int period = 0; period < 3; ++period)
            ASSERT_EQ(engine.push(1, block, 683), QNL_ERROR_NONE);
        engine.pull(2);
        EXPECT_NEAR(engine.pull(2).samples[400], 0.5 * 0.98 * 0.98, 1e-4) << "amid a block the talk is whole";
    }
}

} // namespace
