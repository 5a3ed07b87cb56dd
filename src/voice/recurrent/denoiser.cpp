#include "voice/recurrent/denoiser.h"

#include "dsp/vector_primitives.h"
#include "voice/recurrent/features.h"
#include "voice/recurrent/network.h"

#include <algorithm>
#include <cmath>
#include <cstring>

using namespace denoiser_spectrum;

namespace {

constexpr float slowest_fall = 0.6F; // of a band's gain from frame to frame

void scale_bins(complex32f* x, const float* gain) {
    for (int k = 0; k < bins; ++k)
        x[k] = {x[k].re * gain[k], x[k].im * gain[k]};
}

/// How much of the pitch-delayed spectrum a band takes in.
float comb_strength(float correlation, float gain) {
    if (correlation > gain)
        return 1.0F;
    const float squared_gain = gain * gain;
    const float squared_correlation = correlation * correlation;
    const float r =
        squared_correlation * (1.0F - squared_gain) / (0.001F + squared_gain * (1.0F - squared_correlation));
    return std::sqrt(std::min(1.0F, std::max(0.0F, r)));
}

/// A comb filter on the pitch harmonics that changes the shape of each band and keeps its energy.
void pitch_filter(frame_analysis& frame, const float* gains) {
    float band[bands];
    float bin_gain[bins] = {};
    for (int i = 0; i < bands; ++i)
        band[i] = comb_strength(frame.exp[i], gains[i]) * std::sqrt(frame.ex[i] / (1e-8F + frame.ep[i]));
    interp_band_gain(bin_gain, band);
    for (int k = 0; k < bins; ++k) {
        frame.x[k].re += bin_gain[k] * frame.p[k].re;
        frame.x[k].im += bin_gain[k] * frame.p[k].im;
    }
    float new_energy[bands];
    compute_band_energy(frame.x, new_energy);
    for (int i = 0; i < bands; ++i)
        band[i] = std::sqrt(frame.ex[i] / (1e-8F + new_energy[i]));
    float norm[bins] = {};
    interp_band_gain(norm, band);
    scale_bins(frame.x, norm);
}

/// Lets the network set the gains of the bands. @return the voice probability
float clean_spectrum(rnnoise_state& st, frame_analysis& frame) {
    float gains[largest_rnn_layer] = {};
    const float voice_probability = compute_rnn(
        *st.model, {st.vad_gru_state, st.noise_gru_state, st.denoise_gru_state}, gains, frame.features);
    pitch_filter(frame, gains);
    for (int i = 0; i < bands; ++i) {
        gains[i] = std::max(gains[i], slowest_fall * st.lastg[i]);
        st.lastg[i] = gains[i];
    }
    float bin_gain[bins] = {};
    interp_band_gain(bin_gain, gains);
    scale_bins(frame.x, bin_gain);
    return voice_probability;
}

void synthesise(rnnoise_state& st, const complex32f* spectrum, float* out) {
    float x[window_size];
    inverse_transform(st.fft_plan, spectrum, x);
    apply_window(x, st.half_window);
    qnl_add(x, st.synthesis_mem, out, frame_size);
    qnl_copy(x + frame_size, st.synthesis_mem, frame_size);
}

/// Room for the largest layer, so that a model whose layers do not fit together reads nothing else.
float* allocate_layer_state() {
    return new float[largest_rnn_layer]();
}

} // namespace

std::size_t rnnoise_get_size() {
    return sizeof(rnnoise_state);
}

int rnnoise_init(rnnoise_state* st, const rnnoise_model* model) {
    std::memset(st, 0, sizeof *st);
    st->model = model != nullptr ? model : &rnnoise_model_orig;
    st->vad_gru_state = allocate_layer_state();
    st->noise_gru_state = allocate_layer_state();
    st->denoise_gru_state = allocate_layer_state();
    st->fft_plan = opus_fft_alloc_twiddles(window_size);
    fill_half_window(st->half_window);
    fill_dct_table(st->dct_table);
    return 0;
}

rnnoise_state* rnnoise_create(const rnnoise_model* model) {
    auto* const st = new rnnoise_state;
    rnnoise_init(st, model);
    return st;
}

void rnnoise_destroy(rnnoise_state* st) {
    if (st == nullptr)
        return;
    opus_fft_free(st->fft_plan);
    delete[] st->vad_gru_state;
    delete[] st->noise_gru_state;
    delete[] st->denoise_gru_state;
    delete st;
}

float rnnoise_process_frame(rnnoise_state* st, float* out, const float* in) {
    frame_analysis frame;
    float voice_probability = 0.0F;
    if (compute_features(*st, in, frame))
        voice_probability = clean_spectrum(*st, frame);
    synthesise(*st, frame.x, out);
    return voice_probability;
}

int rnnoise_get_pitch(const rnnoise_state* st) {
    return st->last_period;
}
