#include "voice/agc.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int sample_rate = 48000;
constexpr int ring_size = 1024;

constexpr float target_low_db = -25.2F;
constexpr float target_high_db = -23.2F;
constexpr float target_centre_db = -24.2F;
constexpr float largest_gain_db = 35.0F;
constexpr float loudness_of_nothing_db = -180.0F;

constexpr double speech = 0.85; // voice probability
constexpr double pause = 0.025;

// The ReplayGain equal-loudness curve for 48 kHz: a tenth-order fit of the contour, then a
// high-pass.
constexpr int contour_size = 11;
constexpr float contour_a[contour_size] = {1.0F,
                                           -3.8466460704803467F,
                                           7.815016746520996F,
                                           -11.341703414916992F,
                                           13.055042266845703F,
                                           -12.287598609924316F,
                                           9.482937812805176F,
                                           -5.8725786209106445F,
                                           2.7546586990356445F,
                                           -0.8698437809944153F,
                                           0.13919314742088318F};
constexpr float contour_b[contour_size] = {
    0.038575995713472366F,  -0.021603671833872795F,  -0.0012339531676843762F, -9.291677997680381e-05F,
    -0.016552602872252464F, 0.021615268662571907F,   -0.0207404512912035F,    0.005942980758845806F,
    0.003064280143007636F,  0.00012025322212139145F, 0.002884636865928769F};
constexpr int high_pass_size = 3;
constexpr float high_pass_a[high_pass_size] = {1.0F, -1.972233772277832F, 0.9726139903068542F};
constexpr float high_pass_b[high_pass_size] = {0.986211895942688F, -1.972423791885376F, 0.986211895942688F};

int frame_of(int block) {
    return check_power_of_2(block) != 0 ? 256 : 240;
}

void fill_with_zeros(circular_buffer& ring, int count) {
    const float zeros[256] = {};
    ring.write_BLOCK(zeros, count);
}

} // namespace

quenlis_agc::quenlis_agc(int channels, int block)
    : block_(block),
      channels_(channels),
      frame_(frame_of(block)),
      window_(qnl_make_buffer_32f(frame_)),
      input_tail_(qnl_make_buffer_32f(frame_ / 2)),
      output_tail_(qnl_make_buffer_32f(frame_ / 2)),
      between_frames_{qnl_make_buffer_32f(frame_), qnl_make_buffer_32f(frame_)},
      assembly_(qnl_make_buffer_32f(std::max(block, 2 * frame_))),
      measured_(qnl_make_buffer_32f(frame_)),
      frame_delay_{{1, ring_size}, {1, ring_size}, {1, ring_size}, {1, ring_size}},
      loudness_delay_(1, 8),
      compressor_(sample_rate, channels, block) {
    qnl_set(window_.get(), 1.0F, frame_);
    qnl_hann_window_I(window_.get(), frame_);
    for (circular_buffer& delay : frame_delay_)
        fill_with_zeros(delay, frame_);
    fill_with_zeros(loudness_delay_, 4);
    weighting_.add_filter(contour_size, contour_a, contour_b);
    weighting_.add_filter(high_pass_size, high_pass_a, high_pass_b);
}

void quenlis_agc::process(float* x, float voice_probability) {
    voice_probability_ = voice_probability;
    const int32_t chunk = 2 * frame_;
    for (int32_t c = 0; c < block_ / chunk; ++c)
        process_agc_parsed(x + c * chunk, chunk);
    compressor_.process(x, x);
    if (channels_ > 1)
        qnl_copy(x, x + block_, block_);
}

void quenlis_agc::process_agc_parsed(float* x, int length) {
    const int32_t half = frame_ / 2;
    float* const first = between_frames_[0].get();
    float* const second = between_frames_[1].get();
    qnl_copy(input_tail_.get(), first, half);
    qnl_copy(x, first + half, half);
    qnl_copy(x + half, second, frame_);
    qnl_copy(x + length - half, input_tail_.get(), half);

    float* const in_time_order[delays_] = {first, x, second, x + frame_};
    for (int i = 0; i < delays_; ++i)
        single_agc_block(in_time_order[i], i);
    for (float* const frame : in_time_order)
        qnl_multiply_I(window_.get(), frame, frame_);

    overlap_add(x);
    qnl_copy(x + length - half, output_tail_.get(), half);
    qnl_copy(assembly_.get(), x, length);
}

/// Adds the four windowed frames, each half a frame after the one before, and the tail of the last chunk.
void quenlis_agc::overlap_add(const float* x) {
    const int32_t half = frame_ / 2;
    const float* const first = between_frames_[0].get();
    const float* const second = between_frames_[1].get();
    float* const sum = assembly_.get();
    qnl_add(output_tail_.get(), first, sum, half);
    qnl_add(first + half, x, sum + half, half);
    qnl_add(second, x + half, sum + 2 * half, half);
    qnl_add(second + half, x + 2 * half, sum + 3 * half, half);
}

void quenlis_agc::single_agc_block(float* frame, int index) {
    const float gain = calculate_agc_gain_factor(frame);
    frame_delay_[index].write_BLOCK(frame, frame_);
    frame_delay_[index].read_BLOCK(frame, frame_);
    qnl_multiplyC_I(frame, gain, frame_);
}

float quenlis_agc::compute_loudness(const float* frame) {
    weighting_.process(frame, measured_.get(), frame_);
    qnl_sqr_I(measured_.get(), frame_);
    const float rms = std::sqrt(qnl_mean(measured_.get(), frame_));
    return rms > 0.0F ? 20.0F * std::log10(rms) : loudness_of_nothing_db;
}

float quenlis_agc::calculate_agc_gain_factor(const float* frame) {
    const float loudness = compute_loudness(frame);
    const bool rising = loudness > previous_loudness_;
    float delayed_loudness = 0.0F;
    loudness_delay_.write_BLOCK(&loudness, 1);
    loudness_delay_.read_BLOCK(&delayed_loudness, 1);
    previous_loudness_ = loudness;
    if (static_cast<double>(voice_probability_) > speech)
        track_level(loudness, delayed_loudness, rising);
    const float gain_db = fade_in_pauses(gain_towards_target());
    return ::exp10f(gain_db * 0.05F);
}

void quenlis_agc::track_level(float loudness, float delayed_loudness, bool rising) {
    float alpha = rising ? 0.97F : 0.99F;
    if (loudness - delayed_loudness > 40.0F && delayed_loudness < -60.0F)
        alpha = 0.2F; // speech that starts out of near silence is caught quickly
    if (level_estimate_ - loudness > 20.0F)
        alpha = 0.9999F;
    level_estimate_ = level_estimate_ * alpha + (1.0F - alpha) * loudness;
}

float quenlis_agc::gain_towards_target() const {
    if (level_estimate_ < target_low_db)
        return target_low_db - level_estimate_;
    if (level_estimate_ > target_high_db)
        return target_high_db - level_estimate_;
    return 0.0F;
}

/// Counts quiet frames and takes the gain back with them, before it is held within its limits.
float quenlis_agc::fade_in_pauses(float gain_db) {
    if (static_cast<double>(voice_probability_) < pause) {
        quiet_frames_ += 1.0F;
        if (quiet_frames_ > 100.0F) {
            if (level_estimate_ < target_low_db)
                level_estimate_ = target_centre_db;
            quiet_frames_ = 500.0F;
        }
        if (quiet_frames_ > 50.0F)
            return 0.0F;
        if (quiet_frames_ > 16.0F)
            gain_db *= 1.0F - 0.02F * quiet_frames_;
    } else {
        quiet_frames_ = 0.0F;
    }
    return std::clamp(gain_db, -largest_gain_db, largest_gain_db);
}
