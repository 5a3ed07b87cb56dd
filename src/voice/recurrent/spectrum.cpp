#include "voice/recurrent/spectrum.h"

#include "dsp/discrete_transform.h"

#include <cmath>

namespace denoiser_spectrum {

const short eband5ms[bands] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  10, 12,
                               14, 16, 20, 24, 28, 34, 40, 48, 60, 78, 100};

struct opus_fft_state {
    explicit opus_fft_state(int points)
        : size(points), transform(points), scaled(qnl_make_buffer_32fc(points)) {}

    int size;
    complex_transform transform;
    qnl_buffer_32fc scaled;
};

namespace {

constexpr int bins_per_edge = 4;
constexpr double pi = 3.14159265358979323846;

/// Calls step(band, share, bin) for every bin below the last edge: `share` of it belongs to band + 1, the rest to band.
template <class Step>
void for_each_bin_of_bands(Step step) {
    for (int band = 0; band + 1 < bands; ++band) {
        const int first = bins_per_edge * eband5ms[band];
        const int size = bins_per_edge * (eband5ms[band + 1] - eband5ms[band]);
        for (int j = 0; j < size; ++j)
            step(band, static_cast<float>(j) / static_cast<float>(size), first + j);
    }
}

/// Adds a value per bin up over the bands; the outermost ones have one side only and count double.
template <class Value>
void sum_over_bands(float* sum, Value value) {
    for (int band = 0; band < bands; ++band)
        sum[band] = 0.0F;
    for_each_bin_of_bands([&](int band, float share, int bin) {
        const float v = value(bin);
        sum[band] += (1.0F - share) * v;
        sum[band + 1] += share * v;
    });
    sum[0] *= 2.0F;
    sum[bands - 1] *= 2.0F;
}

} // namespace

opus_fft_state* opus_fft_alloc_twiddles(int size) {
    return new opus_fft_state(size);
}

void opus_fft_c(opus_fft_state* plan, const complex32f* in, complex32f* out) {
    qnl_multiplyC(reinterpret_cast<const float*>(in), reinterpret_cast<float*>(plan->scaled.get()),
                  1.0F / static_cast<float>(plan->size), 2 * plan->size);
    plan->transform.forward(plan->scaled.get(), out);
}

void opus_fft_free(opus_fft_state* plan) {
    delete plan;
}

void fill_half_window(float* half_window) {
    for (int i = 0; i < frame_size; ++i) {
        const double slope = std::sin(0.5 * pi * (i + 0.5) / frame_size);
        half_window[i] = static_cast<float>(std::sin(0.5 * pi * slope * slope));
    }
}

void fill_dct_table(float* dct_table) {
    for (int i = 0; i < bands; ++i)
        for (int j = 0; j < bands; ++j)
            dct_table[i * bands + j] =
                static_cast<float>(std::cos((i + 0.5) * j * pi / bands) * (j == 0 ? std::sqrt(0.5) : 1.0));
}

void apply_window(float* x, const float* half_window) {
    for (int i = 0; i < frame_size; ++i) {
        x[i] *= half_window[i];
        x[window_size - 1 - i] *= half_window[i];
    }
}

void forward_transform(opus_fft_state* plan, const float* x, complex32f* spectrum) {
    complex32f values[window_size];
    for (int i = 0; i < window_size; ++i)
        values[i] = {x[i], 0.0F};
    opus_fft_c(plan, values, values);
    qnl_move(values, spectrum, bins);
}

void inverse_transform(opus_fft_state* plan, const complex32f* spectrum, float* x) {
    complex32f values[window_size];
    qnl_move(spectrum, values, bins);
    for (int k = bins; k < window_size; ++k)
        values[k] = {values[window_size - k].re, -values[window_size - k].im};
    opus_fft_c(plan, values, values);
    // The inverse is the forward transform read backwards.
    x[0] = window_size * values[0].re;
    for (int i = 1; i < window_size; ++i)
        x[i] = window_size * values[window_size - i].re;
}

void compute_band_energy(const complex32f* x, float* energy) {
    sum_over_bands(energy, [=](int bin) { return x[bin].re * x[bin].re + x[bin].im * x[bin].im; });
}

void compute_band_corr(const complex32f* x, const complex32f* p, float* correlation) {
    sum_over_bands(correlation, [=](int bin) { return x[bin].re * p[bin].re + x[bin].im * p[bin].im; });
}

void interp_band_gain(float* gain, const float* band) {
    for_each_bin_of_bands(
        [=](int i, float share, int bin) { gain[bin] = (1.0F - share) * band[i] + share * band[i + 1]; });
}

void dct(float* out, const float* in, const float* dct_table) {
    const auto scale = static_cast<float>(std::sqrt(2.0 / bands));
    for (int i = 0; i < bands; ++i) {
        float sum = 0.0F;
        for (int j = 0; j < bands; ++j)
            sum += in[j] * dct_table[j * bands + i];
        out[i] = sum * scale;
    }
}

} // namespace denoiser_spectrum
