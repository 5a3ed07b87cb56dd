#include "voice/compressor.h"

#include <cmath>

namespace {

constexpr float threshold_db = 4.5F;
constexpr float reduction_per_db = 0.9F; // ratio 10 to 1
constexpr float ln_10 = 2.3025851249694824F;
constexpr float rms_seconds = 0.01F;
constexpr float rise = 0.9999899864196777F;
constexpr float rise_memory = 9.999999747378752e-06F;

} // namespace

quenlis_compressor::quenlis_compressor(int sample_rate, int channels, int block)
    : sample_rate_(sample_rate),
      channels_(channels),
      block_(block),
      gains_(qnl_make_buffer_32f(block)),
      levels_(qnl_make_buffer_32f(block)),
      tens_(qnl_make_buffer_32f(block)),
      rms_coefficient_(std::exp(-ln_10 / (static_cast<float>(sample_rate) * rms_seconds))) {
    qnl_set(tens_.get(), 10.0F, block);
}

void quenlis_compressor::process(const float* in, float* out) {
    qnl_mag_dB(in, levels_.get(), block_);
    qnl_addC_I(levels_.get(), input_offset_, block_);
    for (int32_t i = 0; i < block_; ++i)
        gains_[i] = -applyCurveLogLin(applyRmsFilter(queryGainComputer(levels_[i])));
    qnl_divideC_I(gains_.get(), 20.0F, block_);
    qnl_pow(tens_.get(), gains_.get(), gains_.get(), block_);
    qnl_multiply(gains_.get(), in, out, block_);
    if (channels_ == 2)
        qnl_copy(out, out + block_, block_);
}

float quenlis_compressor::queryGainComputer(float level_dB) {
    return level_dB > threshold_db ? (level_dB - threshold_db) * reduction_per_db : 0.0F;
}

float quenlis_compressor::applyRmsFilter(float reduction_dB) {
    rms_state_ = rms_state_ * rms_coefficient_ + (1.0F - rms_coefficient_) * reduction_dB * reduction_dB;
    return std::sqrt(rms_state_);
}

float quenlis_compressor::applyCurveLogLin(float rms_dB) {
    curve_state_ = curve_state_ > rms_dB ? rms_dB : rise * rms_dB + rise_memory * curve_state_;
    return curve_state_;
}
