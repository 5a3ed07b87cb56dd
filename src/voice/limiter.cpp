#include "voice/limiter.h"

#include <cmath>

namespace {

constexpr float release_ms = 10.0F;
constexpr float peak_of_no_number = 8.999999828524175e+20F;
constexpr double within = 0.01; // what is left of a step after the attack or release time

float one_pole_coefficient(float milliseconds, int sample_rate) {
    return static_cast<float>(std::pow(within, 1000.0 / (static_cast<double>(milliseconds) * sample_rate)));
}

} // namespace

quenlis_limiter::quenlis_limiter(float threshold_dB, float attack_ms, int sample_rate, int channels,
                                 int block)
    : sample_rate_(sample_rate),
      channels_(channels),
      block_(block),
      coefficients_{one_pole_coefficient(attack_ms, sample_rate),
                    one_pole_coefficient(release_ms, sample_rate)},
      threshold_(dB2lin(threshold_dB)),
      magnitudes_(qnl_make_buffer_32f(2 * block)),
      peaks_(qnl_make_buffer_32f(block)),
      look_ahead_(static_cast<int32_t>(attack_ms / 1000.0F * static_cast<float>(sample_rate))),
      left_delay_(qnl_make_buffer_32f(look_ahead_ + block)),
      right_delay_(qnl_make_buffer_32f(look_ahead_ + block)),
      gains_(qnl_make_buffer_32f(block)),
      held_peak_(threshold_),
      attack_(attack_ms),
      release_(release_ms),
      envelope_(threshold_),
      envelope_block_(qnl_make_buffer_32f(block)) {}

void quenlis_limiter::process(const float* in, float* out) {
    qnl_abs(in, magnitudes_.get(), channels_ == 2 ? 2 * block_ : block_);
    qnl_max_every(magnitudes_.get(), magnitudes_.get() + block_, peaks_.get(), block_);
    follow_peaks();
    qnl_divideReverseC(envelope_block_.get(), gains_.get(), threshold_, block_);
    delay(in);
    qnl_multiply(gains_.get(), left_delay_.get(), out, block_);
    if (channels_ == 2)
        qnl_multiply(gains_.get(), right_delay_.get(), out + block_, block_);
}

void quenlis_limiter::follow_peaks() {
    for (int32_t i = 0; i < block_; ++i)
        envelope_block_[i] = next_envelope(peaks_[i]);
}

float quenlis_limiter::next_envelope(float peak) {
    const float target = max_float(threshold_, std::isfinite(peak) ? peak : peak_of_no_number);
    ++hold_counter_;
    if (hold_counter_ >= look_ahead_ || target > held_peak_) {
        held_peak_ = target;
        hold_counter_ = 0;
    }
    const float coefficient = coefficients_[held_peak_ > envelope_ ? 0 : 1];
    envelope_ = (envelope_ - held_peak_) * coefficient + held_peak_;
    return envelope_;
}

void quenlis_limiter::delay(const float* in) {
    delay_channel(in, left_delay_.get());
    // The right line reads the second half of the input whatever the number of channels.
    delay_channel(in + block_, right_delay_.get());
}

void quenlis_limiter::delay_channel(const float* in, float* line) const {
    qnl_move(line + block_, line, look_ahead_);
    qnl_copy(in, line + look_ahead_, block_);
}
