// Writes what the recurrent denoiser hears in each frame of a recording: the ground of its training.
#include "mono_file.h"
#include "table_file.h"

#include "dsp/flush_to_zero.h"
#include "dsp/sample_conversion.h"
#include "voice/neural/anc.h"
#include "voice/recurrent/features.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using denoiser_spectrum::bands;

/// Features, band energies, pitch correlations of the bands, pitch period in samples, 1 for an active frame or 0.
using feature_row = std::array<float, feature_count + 2 * bands + 2>;

/// The listening half of a talker's road.
class listener {
public:
    explicit listener(bool through_canceller) : denoiser_(rnnoise_create(nullptr), &rnnoise_destroy) {
        if (through_canceller)
            canceller_.emplace(voice_rate, 1, voice_frame);
    }

    /// @param samples  one frame of full scale 1.0, changed on the way
    feature_row hear(float* samples) {
        const flush_to_zero guard;
        if (canceller_)
            canceller_->process(samples, samples);
        expand_float_to_short_values(samples, voice_frame);
        frame_analysis frame;
        const bool active = compute_features(*denoiser_, samples, frame);
        feature_row row{};
        float* next = std::copy_n(frame.features, feature_count, row.data());
        next = std::copy_n(frame.ex, bands, next);
        next = std::copy_n(frame.exp, bands, next);
        next[0] = static_cast<float>(rnnoise_get_pitch(denoiser_.get()));
        next[1] = active ? 1.0F : 0.0F;
        return row;
    }

private:
    std::unique_ptr<rnnoise_state, decltype(&rnnoise_destroy)> denoiser_;
    std::optional<quenlis_anc> canceller_;
};

void write_features(const std::string& recording, const std::string& rows, bool through_canceller) {
    mono_file in(recording);
    table_file out(rows);
    listener ears(through_canceller);
    float samples[voice_frame];
    while (in.read(samples, voice_frame) == voice_frame) {
        const feature_row row = ears.hear(samples);
        out.append(row.data(), row.size());
    }
    out.finish();
}

} // namespace

int main(int argc, char** argv) {
    try {
        CLI::App app{
            "Writes the features of each whole frame of 480 samples as 88 little-endian floats: 42\n"
            "features, 22 band energies, 22 pitch correlations of the bands, the pitch period in samples,\n"
            "and 1 for an active frame or 0."};
        std::vector<std::pair<std::string, std::string>> files;
        bool through_canceller = false;
        app.add_option("files", files,
                       "recordings, 48 kHz mono (.wav, .flac, .ogg, .f32), each before its output")
            ->required();
        app.add_flag("--through-canceller", through_canceller,
                     "clean each recording with the canceller first");
        CLI11_PARSE(app, argc, argv);
        if (files.back().second.empty())
            throw std::runtime_error("each recording needs an output");
        for (const auto& [in, out] : files)
            write_features(in, out, through_canceller);
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "quenlis_features: " << failure.what() << '\n';
        return 1;
    }
}
