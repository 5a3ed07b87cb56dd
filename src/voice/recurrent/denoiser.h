/// The recurrent denoiser: one frame of 10 ms in, one cleaned frame out, with voice probability and pitch.
#pragma once

#include "voice/recurrent/model.h"
#include "voice/recurrent/spectrum.h"

#include <cstddef>
#include <cstdint>

/// All that one talker's denoiser remembers, tables included: a state shares nothing but its model with others.
struct rnnoise_state {
    static constexpr int cepstral_frames = 8;
    static constexpr int pitch_history = 1728;

    float analysis_mem[denoiser_spectrum::frame_size]; // second half of the previous analysis frame
    float cepstral_mem[cepstral_frames][denoiser_spectrum::bands];
    std::int32_t memid; // next slot of the cepstra
    float synthesis_mem[denoiser_spectrum::frame_size];
    float pitch_buf[pitch_history]; // high-passed, newest at the end
    float last_gain;
    std::int32_t last_period; // samples at 48 kHz
    float mem_hp_x[2];
    float lastg[denoiser_spectrum::bands]; // gains of the last active frame
    denoiser_spectrum::opus_fft_state* fft_plan;
    float half_window[denoiser_spectrum::frame_size];
    float dct_table[denoiser_spectrum::bands * denoiser_spectrum::bands];
    const rnnoise_model* model; // borrowed
    float* vad_gru_state;
    float* noise_gru_state;
    float* denoise_gru_state;
};

/// Bytes of a state.
std::size_t rnnoise_get_size();

/// Clears a state and makes what it owns. @param model  outlives the state; null for the built-in one. @return 0
int rnnoise_init(rnnoise_state* st, const rnnoise_model* model);

/// A new state, to be given back with rnnoise_destroy. Model as above.
rnnoise_state* rnnoise_create(const rnnoise_model* model);

/// Gives back a state of rnnoise_create with all that it owns, never its model. Null is ignored.
void rnnoise_destroy(rnnoise_state* st);

/// Cleans one frame of 480 samples at 48 kHz, scaled to the range of 16-bit audio. The output is one frame late; what
/// lies above 20 kHz is lost in every frame that isn't silent. A frame below the threshold of silence leaves the
/// network's state as it was. After a NaN or infinity the output is NaN and the voice probability without meaning, for
/// good. Never allocates. One thread at a time for each state.
///
/// J.-M. Valin, "A hybrid DSP/deep learning approach to real-time full-band speech enhancement", 2018.
///
/// @param out  480 samples; may be `in`
/// @return the voice probability of the newest samples, 0 to 1
float rnnoise_process_frame(rnnoise_state* st, float* out, const float* in);

/// Pitch period of the last frame in samples: 60 to 767, 0 before the first one. Without meaning in silence.
int rnnoise_get_pitch(const rnnoise_state* st);
