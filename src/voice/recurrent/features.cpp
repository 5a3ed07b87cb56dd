#include "voice/recurrent/features.h"

#include "dsp/vector_primitives.h"
#include "voice/recurrent/pitch.h"

#include <algorithm>
#include <cmath>

using namespace denoiser_spectrum;

namespace {

constexpr int delta_coefficients = 6;
constexpr float silence_energy = 0.04F;

static_assert(rnnoise_state::pitch_history == pitch_analysis::history);

void high_pass(const float* in, float* out, float* mem) {
    constexpr float a[] = {-1.99599F, 0.996F};
    for (int i = 0; i < frame_size; ++i) {
        const float x = in[i];
        const float y = x + mem[0];
        mem[0] = static_cast<float>(mem[1] + (-2.0 * x - static_cast<double>(a[0]) * y));
        mem[1] = static_cast<float>(static_cast<double>(x) - static_cast<double>(a[1]) * y);
        out[i] = y;
    }
}

/// Spectrum and band energies of the last 960 samples.
void analyse_frame(rnnoise_state& st, const float* in, frame_analysis& frame) {
    float x[window_size];
    qnl_copy(st.analysis_mem, x, frame_size);
    qnl_copy(in, x + frame_size, frame_size);
    qnl_copy(in, st.analysis_mem, frame_size);
    apply_window(x, st.half_window);
    forward_transform(st.fft_plan, x, frame.x);
    compute_band_energy(frame.x, frame.ex);
}

/// Takes the new samples into the history and finds the pitch period.
int track_pitch(rnnoise_state& st, const float* in) {
    using namespace pitch_analysis;
    qnl_move(st.pitch_buf + frame_size, st.pitch_buf, history - frame_size);
    qnl_copy(in, st.pitch_buf + history - frame_size, frame_size);
    float x_lp[half_history + padding];
    pitch_downsample(st.pitch_buf, x_lp);
    int period = max_period - pitch_search(x_lp + max_period / 2, x_lp, correlation_frame, longest_lag);
    st.last_gain = remove_doubling(x_lp, max_period, min_period, correlation_frame, period, st.last_period,
                                   st.last_gain);
    st.last_period = period;
    return period;
}

/// The spectrum one period earlier, and how far it resembles the frame's.
void correlate_with_pitch(const rnnoise_state& st, int period, frame_analysis& frame) {
    float x[window_size];
    qnl_copy(st.pitch_buf + pitch_analysis::max_period - period, x, window_size);
    apply_window(x, st.half_window);
    forward_transform(st.fft_plan, x, frame.p);
    compute_band_energy(frame.p, frame.ep);
    compute_band_corr(frame.x, frame.p, frame.exp);
    for (int i = 0; i < bands; ++i)
        frame.exp[i] = frame.exp[i] / std::sqrt(0.001F + frame.ex[i] * frame.ep[i]);
}

void pitch_features(const rnnoise_state& st, int period, frame_analysis& frame) {
    float correlation[bands];
    dct(correlation, frame.exp, st.dct_table);
    float* const feature = frame.features + bands + 2 * delta_coefficients;
    qnl_copy(correlation, feature, delta_coefficients);
    feature[0] -= 1.3F;
    feature[1] -= 0.9F;
    frame.features[40] = 0.01F * static_cast<float>(period - 300);
}

/// The log spectrum, with limits to how steeply it falls. @return the whole energy
float log_spectrum(const float* ex, float* ly) {
    float log_max = -2.0F;
    float follow = -2.0F;
    float energy = 0.0F;
    for (int i = 0; i < bands; ++i) {
        ly[i] = std::max({log_max - 7.0F, follow - 1.5F, std::log10(0.01F + ex[i])});
        log_max = std::max(log_max, ly[i]);
        follow = std::max(follow - 1.5F, ly[i]);
        energy += ex[i];
    }
    return energy;
}

/// The sum over all remembered frames of the squared distance to the nearest other one.
float spectral_variability(const rnnoise_state& st) {
    float sum = 0.0F;
    for (int i = 0; i < rnnoise_state::cepstral_frames; ++i) {
        float nearest = 1e15F;
        for (int j = 0; j < rnnoise_state::cepstral_frames; ++j) {
            float distance = 0.0F;
            for (int k = 0; k < bands; ++k) {
                const float difference = st.cepstral_mem[i][k] - st.cepstral_mem[j][k];
                distance += difference * difference;
            }
            if (j != i)
                nearest = std::min(nearest, distance);
        }
        sum += nearest;
    }
    return sum;
}

void cepstral_features(rnnoise_state& st, const float* ly, float* features) {
    constexpr int frames = rnnoise_state::cepstral_frames;
    dct(features, ly, st.dct_table);
    features[0] -= 12.0F;
    features[1] -= 4.0F;
    const float* const c0 = st.cepstral_mem[st.memid];
    const float* const c1 = st.cepstral_mem[(st.memid + frames - 1) % frames];
    const float* const c2 = st.cepstral_mem[(st.memid + frames - 2) % frames];
    qnl_copy(features, st.cepstral_mem[st.memid], bands);
    st.memid = (st.memid + 1) % frames;
    for (int i = 0; i < delta_coefficients; ++i) {
        features[i] = c0[i] + c1[i] + c2[i];
        features[bands + i] = c0[i] - c2[i];
        features[bands + delta_coefficients + i] = c0[i] - 2.0F * c1[i] + c2[i];
    }
    features[41] = spectral_variability(st) * 0.125F - 2.1F;
}

} // namespace

bool compute_features(rnnoise_state& st, const float* in, frame_analysis& frame) {
    float x[frame_size];
    high_pass(in, x, st.mem_hp_x);
    analyse_frame(st, x, frame);
    const int period = track_pitch(st, x);
    correlate_with_pitch(st, period, frame);
    float ly[bands];
    if (log_spectrum(frame.ex, ly) < silence_energy)
        return false;
    pitch_features(st, period, frame);
    cepstral_features(st, ly, frame.features);
    return true;
}
