// Runs recordings through packaged noise suppressors, to compare the engine with them.
#include "mono_file.h"

#include <speex/speex_preprocess.h>
#include <speex/speex_resampler.h>
#include <webrtc/modules/audio_processing/include/audio_processing.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <exception>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

/// Cleans one frame of full scale 1.0 in place.
class suppressor {
public:
    virtual ~suppressor() = default;
    virtual void process(float* frame) = 0;
};

/// At its default strength.
class speexdsp_suppressor : public suppressor {
public:
    speexdsp_suppressor()
        : state_(speex_preprocess_state_init(voice_frame, voice_rate), &speex_preprocess_state_destroy) {
        int on = 1;
        speex_preprocess_ctl(state_.get(), SPEEX_PREPROCESS_SET_DENOISE, &on);
    }

    void process(float* frame) override {
        spx_int16_t shorts[voice_frame];
        std::transform(frame, frame + voice_frame, shorts, [](float sample) {
            return static_cast<spx_int16_t>(std::lrint(std::clamp(sample * 32768.0F, -32768.0F, 32767.0F)));
        });
        speex_preprocess_run(state_.get(), shorts);
        std::transform(shorts, shorts + voice_frame, frame,
                       [](spx_int16_t sample) { return static_cast<float>(sample) / 32768.0F; });
    }

private:
    std::unique_ptr<SpeexPreprocessState, decltype(&speex_preprocess_state_destroy)> state_;
};

/// At "high". On the whole band it splits the signal and joins it again, which costs it some of its gain; at 16 kHz it
/// has no need to, and loses what lies above 8 kHz.
class webrtc_suppressor : public suppressor {
public:
    explicit webrtc_suppressor(int rate)
        : rate_(rate),
          processing_(webrtc::AudioProcessing::Create()),
          upsampler_(speex_resampler_init(1, static_cast<spx_uint32_t>(rate), voice_rate,
                                          SPEEX_RESAMPLER_QUALITY_MAX, nullptr),
                     &speex_resampler_destroy) {
        processing_->noise_suppression()->set_level(webrtc::NoiseSuppression::kHigh);
        processing_->noise_suppression()->Enable(true);
    }

    void process(float* frame) override {
        const webrtc::StreamConfig whole_band(voice_rate, 1);
        const webrtc::StreamConfig own_band(rate_, 1);
        float cleaned[voice_frame];
        float* const channel = cleaned;
        if (processing_->ProcessStream(&frame, whole_band, own_band, &channel) !=
            webrtc::AudioProcessing::kNoError)
            throw std::runtime_error("webrtc refuses a frame");
        auto taken = static_cast<spx_uint32_t>(own_band.num_frames());
        spx_uint32_t made = voice_frame;
        speex_resampler_process_float(upsampler_.get(), 0, cleaned, &taken, frame, &made);
    }

private:
    int rate_;
    std::unique_ptr<webrtc::AudioProcessing> processing_;
    std::unique_ptr<SpeexResamplerState, decltype(&speex_resampler_destroy)> upsampler_;
};

std::unique_ptr<suppressor> make_suppressor(const std::string& name) {
    if (name == "speexdsp")
        return std::make_unique<speexdsp_suppressor>();
    return std::make_unique<webrtc_suppressor>(name == "webrtc" ? voice_rate : 16000);
}

} // namespace

int main(int argc, char** argv) {
    try {
        CLI::App app{"Passes recordings through a packaged noise suppressor, in frames of 10 ms. The output "
                     "is as long as\n"
                     "the recording and as late as the suppressor makes it."};
        std::string name;
        std::vector<std::pair<std::string, std::string>> files;
        app.add_option("suppressor", name, "which one")
            ->required()
            ->check(CLI::IsMember({"speexdsp", "webrtc", "webrtc16k"}));
        app.add_option("files", files, "recordings, 48 kHz mono, each before its output, a WAV file")
            ->required();
        CLI11_PARSE(app, argc, argv);
        if (files.back().second.empty())
            throw std::runtime_error("each recording needs an output");
        for (const auto& [in, out] : files) {
            std::vector<float> voice = mono_file(in).read_all();
            const auto peer = make_suppressor(name);
            for (std::size_t start = 0; start + voice_frame <= voice.size(); start += voice_frame)
                peer->process(&voice[start]);
            write_mono_wav(out, voice);
        }
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "quenlis_peers: " << failure.what() << '\n';
        return 1;
    }
}
