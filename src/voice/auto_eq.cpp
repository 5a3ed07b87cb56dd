#include "voice/auto_eq.h"

#include "voice/auto_eq_tables.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int transform_size = 2048;
constexpr float reference_pitch = 124.0F;
constexpr float start_level = 0.004F;
constexpr float voiced = 0.85F;
constexpr int free_band_limit_hz = 14000; // bands above follow the peak alone
constexpr float band_strength = 0.7F;

// Centres of the third octaves in Hz, with the neighbours of the outermost.
constexpr int band_count = 25;
constexpr int band_centres[band_count + 2] = {60,   80,   100,  125,  160,   200,   250,   315,   400,
                                              500,  630,  800,  1000, 1250,  1600,  2000,  2500,  3150,
                                              4000, 5000, 6300, 8000, 10000, 12500, 16000, 20000, 24000};
constexpr int knot_count = 2 * band_count - 1;

// The low end of the target for the reference pitch.
constexpr int node_count = 12;
constexpr int last_node_bin = 42;
constexpr int spectra_index[node_count] = {0, 3, 5, 8, 11, 13, 17, 21, 26, 30, 34, 38};
constexpr float spectra_values[node_count] = {-36, -29, -16, -25, -22, -28, -31, -33, -34, -35, -34, -33};

float smoothing_of(int sample_rate, int block_size) {
    return 1.0F + 1.0F / (static_cast<float>(sample_rate) * -3.0F / static_cast<float>(block_size));
}

} // namespace

quenlis_auto_eq_band::quenlis_auto_eq_band(int sample_rate, int center_hz, int upper_hz, int lower_hz)
    : center_freq(center_hz), upper_freq(upper_hz), lower_freq(lower_hz) {
    // A whole number on purpose: 23 Hz at 48 kHz, 2% below the true width.
    const int bin_width = sample_rate / transform_size;
    lower_bin = lower_freq / bin_width;
    upper_bin = std::min(upper_freq / bin_width, auto_eq_bins - 1);
    center_bin = center_freq / bin_width;
}

quenlis_auto_EQ::quenlis_auto_EQ(int sample_rate, int channels, int block_size)
    : sample_rate_(sample_rate),
      channels_(channels),
      block_size_(block_size),
      smoothing_(smoothing_of(sample_rate, block_size)),
      analysis_fft_(size_, true),
      kernel_fft_(size_, true),
      inverse_fft_(size_, false),
      spectrum_(qnl_make_buffer_32fc(size_)),
      overlap_(qnl_make_buffer_32f(size_)),
      spline_(knot_count),
      target_curve_(qnl_make_buffer_32f(bins_)),
      filter_spectrum_(qnl_make_buffer_32fc(size_)),
      measured_curve_(qnl_make_buffer_32f(bins_)),
      block_db_(qnl_make_buffer_32f(bins_)),
      difference_(qnl_make_buffer_32f(bins_)),
      band_gains_(band_count),
      impulse_(qnl_make_buffer_32f(size_)),
      response_(qnl_make_buffer_32fc(size_)),
      imaginary_zero_(qnl_make_buffer_32f(size_)),
      kernel_(qnl_make_buffer_32f(bins_)),
      gain_curve_(qnl_make_buffer_32f(size_)) {
    qnl_set(filter_spectrum_.get(), {1.0F, 0.0F}, size_);
    bands_.reserve(band_count);
    for (int i = 0; i < band_count; ++i)
        bands_.emplace_back(sample_rate, band_centres[i + 1], band_centres[i + 2], band_centres[i]);
    knot_bins_.reserve(knot_count);
    knot_gains_.reserve(knot_count);
    qnl_copy(target_values, target_curve_.get(), bins_);
    qnl_set(pitch_history_, reference_pitch, pitches_);
    update_target_curve();
    qnl_copy(target_curve_.get(), measured_curve_.get(), bins_);
    // A real kernel from the start; the empty block that it learns from lowers the measured curve a little.
    analyze();
    qnl_set(input_levels_, start_level, levels_);
    qnl_set(output_levels_, start_level, levels_);
}

void quenlis_auto_EQ::process(const float* in, float* out, float voice_probability, int pitch) {
    analysis_fft_.RFFT(in, block_size_, spectrum_.get(), size_);
    if (voice_probability > voiced) {
        update_pitch_estimate(pitch);
        compute_rms(in, true);
        analyze();
        filter(out);
        compute_rms(out, false);
    } else {
        filter(out);
    }
    const float make_up = qnl_mean(input_levels_, levels_) / qnl_mean(output_levels_, levels_);
    qnl_multiplyC_I(out, make_up, block_size_);
    if (channels_ >= 2)
        qnl_copy(out, out + block_size_, block_size_);
}

void quenlis_auto_EQ::update_pitch_estimate(int pitch) {
    pitch_history_[pitch_index_] = static_cast<float>(pitch);
    pitch_index_ = (pitch_index_ + 1) % pitches_;
    pitch_estimate_ = static_cast<int32_t>(qnl_mean(pitch_history_, pitches_));
}

void quenlis_auto_EQ::update_target_curve() {
    const float ratio = static_cast<float>(pitch_estimate_) / reference_pitch;
    float* const target = target_curve_.get();
    int node_bin[node_count + 1];
    for (int k = 0; k < node_count; ++k) {
        node_bin[k] = static_cast<int>(static_cast<float>(spectra_index[k]) * ratio);
        if (node_bin[k] <= last_node_bin)
            target[node_bin[k]] = spectra_values[k];
        else
            node_bin[k] = last_node_bin;
    }
    // Nothing brings back the table's value of this bin once a node has landed on it. This is wanted.
    node_bin[node_count] = last_node_bin;
    for (int k = 0; k < node_count; ++k) {
        const int left = node_bin[k];
        const int right = node_bin[k + 1];
        for (int i = left + 1; i < right; ++i) {
            const float share = static_cast<float>(i - left) / static_cast<float>(right - left);
            target[i] = (1.0F - share) * target[left] + share * target[right];
        }
    }
}

void quenlis_auto_EQ::compute_rms(const float* block, bool is_input) {
    float squares[size_];
    qnl_sqr(block, squares, block_size_);
    const float rms = std::sqrt(qnl_mean(squares, block_size_));
    float* const ring = is_input ? input_levels_ : output_levels_;
    int32_t& index = is_input ? input_level_index_ : output_level_index_;
    ring[index] = rms;
    index = (index + 1) % levels_;
}

void quenlis_auto_EQ::analyze() {
    measure_block();
    update_target_curve();
    qnl_subtract(measured_curve_.get(), target_curve_.get(), difference_.get(), bins_);
    place_knots();
    shape_response();
    rebuild_filter();
}

void quenlis_auto_EQ::measure_block() {
    complex32f* const spectrum = spectrum_.get();
    for (int k = 0; k < bins_; ++k)
        if (spectrum[k].re == 0.0F && spectrum[k].im == 0.0F)
            spectrum[k].re = 1e-7F;
    qnl_power_spectrum_dB(spectrum, block_db_.get(), bins_);
    qnl_multiplyC_I(measured_curve_.get(), smoothing_, bins_);
    qnl_multiplyC_I(block_db_.get(), 1.0F - smoothing_, bins_);
    qnl_add_I(block_db_.get(), measured_curve_.get(), bins_);
}

/// One knot for each band, relative to the peak of the difference, and their mirror over the transform's circle.
void quenlis_auto_EQ::place_knots() {
    const float peak = qnl_max(difference_.get(), bins_);
    knot_bins_.clear();
    knot_gains_.clear();
    for (int i = 0; i < band_count; ++i) {
        const quenlis_auto_eq_band& band = bands_[i];
        const float mean = qnl_mean(difference_.get() + band.lower_bin, band.upper_bin - band.lower_bin);
        band_gains_[i] = band.center_freq <= free_band_limit_hz ? band_strength * (mean - peak) : -peak;
        knot_bins_.push_back(band.center_bin);
        knot_gains_.push_back(band_gains_[i]);
    }
    for (int i = band_count - 1; i >= 1; --i) {
        knot_bins_.push_back(size_ - bands_[i].center_bin);
        knot_gains_.push_back(band_gains_[i]);
    }
}

/// The symmetric magnitude response through the knots.
void quenlis_auto_EQ::shape_response() {
    float* const gain = gain_curve_.get();
    spline_.fit(knot_bins_, knot_gains_);
    spline_.evaluate(gain, bins_);
    // As powers, although the result acts as an amplitude: the band strength is set for this.
    qnl_power_dB_to_linear_I(gain, bins_);
    for (int k = 1; k < bins_; ++k)
        gain[size_ - k] = gain[k];
    gain[bins_] = (gain[bins_ - 1] + gain[bins_ + 1]) / 2.0F;
}

/// The response as a causal linear-phase filter, cut to 1024 taps without a taper.
void quenlis_auto_EQ::rebuild_filter() {
    constexpr int half = bins_ / 2;
    qnl_real_to_complex(gain_curve_.get(), imaginary_zero_.get(), response_.get(), size_);
    inverse_fft_.IFFT_no_save(response_.get(), impulse_.get(), size_);
    qnl_copy(impulse_.get() + size_ - half, kernel_.get(), half);
    qnl_copy(impulse_.get(), kernel_.get() + half, half);
    kernel_fft_.RFFT(kernel_.get(), bins_, filter_spectrum_.get(), size_);
}

void quenlis_auto_EQ::filter(float* out) {
    qnl_multiply_I(filter_spectrum_.get(), spectrum_.get(), size_);
    inverse_fft_.IFFT(spectrum_.get(), overlap_.get(), size_);
    qnl_copy(overlap_.get(), out, block_size_);
    qnl_shift_and_clear(overlap_.get(), block_size_, size_);
}
