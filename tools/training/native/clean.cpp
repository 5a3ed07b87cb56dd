// Runs recordings through the engine as a talker's voice and writes what a listener hears, in step with the recording.
#include "mono_file.h"
#include "unfinished_file.h"

#include "dsp/flush_to_zero.h"
#include "quenlis.h"
#include "voice/neural/anc.h"
#include "voice/recurrent/rnn.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using samples = std::vector<float>;

struct effects {
    bool noise_cancellation = true;
    bool gain_control = false;

    /// How late the talker's voice comes, frames.
    std::size_t latency() const { return (noise_cancellation ? 960 : 0) + (gain_control ? 600 : 0); }
};

void require_success(int code) {
    if (code != QNL_ERROR_NONE)
        throw std::runtime_error(std::string("the engine refuses: ") + qnl_error_code_to_string(code));
}

/// Samples in whole blocks that go on with silence for another `tail` samples.
samples padded(samples x, std::size_t tail) {
    x.resize((x.size() + tail + voice_frame - 1) / voice_frame * voice_frame);
    return x;
}

/// A room of a talker and a listener who hears the mix without the stages of a listener's road. A mono talker comes to
/// a mono listener at unity: 3 dB down on both sides, summed at 3 dB down.
class conversation {
public:
    explicit conversation(const effects& on) {
        int code = QNL_ERROR_NONE;
        engine_.reset(
            qnl_initialize_library(nullptr, nullptr, {voice_rate, voice_frame, 1, false, 1}, &code));
        require_success(code);
        require_success(qnl_create_room(engine_.get(), room));
        join(talker, QNL_PARTICIPANT_SOURCE_ONLY);
        join(ears, QNL_PARTICIPANT_LISTENER_ONLY);
        set(ears, QNL_CONTROL_STEREO_BYPASS_ENABLE, true);
        set(talker, QNL_CONTROL_ANC_ENABLE, on.noise_cancellation);
        set(talker, QNL_CONTROL_AGC_ENABLE, on.gain_control);
    }

    /// @param block  one frame, said by the talker, then heard by the listener
    void pass(float* block) {
        require_success(qnl_input_audio_float(engine_.get(), room, talker, block, voice_frame));
        require_success(qnl_output_audio_float(engine_.get(), room, ears, block));
    }

private:
    static constexpr int room = 1;
    static constexpr int talker = 1;
    static constexpr int ears = 2;

    void join(int id, qnl_participant_type type) {
        require_success(qnl_add_participant(engine_.get(), room, id, nullptr, {voice_rate, 1, type}));
    }
    void set(int id, qnl_audio_control control, bool on) {
        require_success(qnl_set_participant_state(engine_.get(), room, id, control, on ? 1 : 0));
    }

    struct destroyer {
        void operator()(qnl_handle engine) const { qnl_destroy_library(engine); }
    };
    std::unique_ptr<quenlis_sound_manager, destroyer> engine_;
};

samples clean(const samples& voice, const effects& on) {
    conversation room(on);
    samples heard = padded(voice, on.latency());
    for (std::size_t start = 0; start < heard.size(); start += voice_frame)
        room.pass(&heard[start]);
    heard.erase(heard.begin(), heard.begin() + static_cast<std::ptrdiff_t>(on.latency()));
    heard.resize(voice.size());
    return heard;
}

struct finding {
    float voice_probability;
    int pitch; // Hz
};

/// What the speech analysis finds in each frame, as a talker's road runs it.
std::vector<finding> analyse(const samples& voice, bool through_canceller) {
    const flush_to_zero guard;
    quenlis_anc canceller(voice_rate, 1, voice_frame);
    quenlis_rnn analysis(voice_frame, 1);
    samples x = padded(voice, through_canceller ? voice_frame : 0);
    std::vector<finding> found;
    for (std::size_t start = 0; start < x.size(); start += voice_frame) {
        float* const block = &x[start];
        if (through_canceller)
            canceller.process(block, block);
        const float voice_probability = analysis.process(block, block);
        found.push_back({voice_probability, analysis.get_pitch()});
    }
    if (through_canceller)
        found.erase(found.begin()); // the canceller is one frame late
    return found;
}

/// A row for each frame of the recording, in step with it.
void write_report(const std::filesystem::path& file, const samples& voice) {
    const unfinished_file unfinished(file);
    std::ofstream out(unfinished.path());
    out << "voice,pitch,raw_voice,raw_pitch\n";
    const std::vector<finding> cancelled = analyse(voice, true);
    const std::vector<finding> raw = analyse(voice, false);
    for (std::size_t i = 0; i < raw.size(); ++i)
        out << cancelled[i].voice_probability << ',' << cancelled[i].pitch << ',' << raw[i].voice_probability
            << ',' << raw[i].pitch << '\n';
    out.close();
    if (!out)
        unfinished.fail();
    unfinished.finish();
}

} // namespace

int main(int argc, char** argv) {
    try {
        CLI::App app{"Passes recordings through a conference with noise cancellation on and writes what a "
                     "listener hears,\n"
                     "of the same length and without the engine's latency."};
        std::vector<std::pair<std::string, std::string>> files;
        effects on;
        bool report = false;
        app.add_option("files", files, "recordings, 48 kHz mono, each before its output, a WAV file")
            ->required();
        app.add_flag("--gain-control", on.gain_control, "with automatic gain control");
        app.add_flag("!--no-cancelling", on.noise_cancellation, "without noise cancellation");
        app.add_flag(
            "--report", report,
            "beside each output, as .csv: voice probability and pitch in Hz of each frame of 480 samples,\n"
            "behind the neural canceller and of the recording itself");
        CLI11_PARSE(app, argc, argv);
        if (files.back().second.empty())
            throw std::runtime_error("each recording needs an output");
        for (const auto& [in, out] : files) {
            const samples voice = mono_file(in).read_all();
            write_mono_wav(out, clean(voice, on));
            if (report)
                write_report(std::filesystem::path(out).replace_extension(".csv"), voice);
        }
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "quenlis_clean: " << failure.what() << '\n';
        return 1;
    }
}
