#include "audio_port.h"

namespace {

/// How the samples of one call family are made from floats and back, and the family's two calls.
template <class Sample>
struct call_family;

template <>
struct call_family<short> {
    static short from_float(float sample) { return to_int16(sample); }
    static float to_float(short sample) { return from_int16(sample); }
    static qnl_error_code input(const port_configuration& of, const short* talk, int frames) {
        return qnl_input_audio_short(of.engine, of.room_id, of.participant_id, talk, frames);
    }
    static qnl_error_code output(const port_configuration& of, short* mix) {
        return qnl_output_audio_short(of.engine, of.room_id, of.participant_id, mix);
    }
};

template <>
struct call_family<float> {
    static float from_float(float sample) { return sample; }
    static float to_float(float sample) { return sample; }
    static qnl_error_code input(const port_configuration& of, const float* talk, int frames) {
        return qnl_input_audio_float(of.engine, of.room_id, of.participant_id, talk, frames);
    }
    static qnl_error_code output(const port_configuration& of, float* mix) {
        return qnl_output_audio_float(of.engine, of.room_id, of.participant_id, mix);
    }
};

template <>
struct call_family<double> {
    static double from_float(float sample) { return sample; }
    static float to_float(double sample) { return static_cast<float>(sample); }
    static qnl_error_code input(const port_configuration& of, const double* talk, int frames) {
        return qnl_input_audio_double(of.engine, of.room_id, of.participant_id, talk, frames);
    }
    static qnl_error_code output(const port_configuration& of, double* mix) {
        return qnl_output_audio_double(of.engine, of.room_id, of.participant_id, mix);
    }
};

template <class Sample>
class typed_audio_port : public audio_port {
    using family = call_family<Sample>;

public:
    explicit typed_audio_port(const port_configuration& whose) : whose_(whose) {}

    qnl_error_code push(const std::vector<float>& block) override {
        buffer_.resize(block.size());
        for_each_pair(block.size(), whose_.input_channels, [&](std::size_t interleaved, std::size_t place) {
            buffer_[place] = family::from_float(block[interleaved]);
        });
        return family::input(whose_, buffer_.data(), static_cast<int>(block.size()) / whose_.input_channels);
    }

    qnl_error_code pull(std::vector<float>& block) override {
        buffer_.resize(block.size());
        const qnl_error_code code = family::output(whose_, buffer_.data());
        for_each_pair(block.size(), whose_.output_channels, [&](std::size_t interleaved, std::size_t place) {
            block[interleaved] = family::to_float(buffer_[place]);
        });
        return code;
    }

private:
    /// Walks over all samples with their index in an interleaved block and in the engine's buffer.
    template <class Action>
    void for_each_pair(std::size_t samples, int channel_count, Action action) const {
        // A buffer that stays interleaved is walked like a single channel.
        const std::size_t channels = whose_.interleaved ? 1 : static_cast<std::size_t>(channel_count);
        const std::size_t frames = samples / channels;
        for (std::size_t channel = 0; channel < channels; ++channel)
            for (std::size_t frame = 0; frame < frames; ++frame)
                action(frame * channels + channel, channel * frames + frame);
    }

    port_configuration whose_;
    std::vector<Sample> buffer_;
};

} // namespace

std::unique_ptr<audio_port> make_audio_port(sample_type samples, const port_configuration& whose) {
    switch (samples) {
    case sample_type::int16:
        return std::make_unique<typed_audio_port<short>>(whose);
    case sample_type::float64:
        return std::make_unique<typed_audio_port<double>>(whose);
    case sample_type::float32:
        break;
    }
    return std::make_unique<typed_audio_port<float>>(whose);
}
