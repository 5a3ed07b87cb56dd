/// The fast half of the gain control: what its slow gain lets through is caught here.
#pragma once

#include "dsp/vector_primitives.h"

#include <cstdint>

/// A compressor that works on decibels, sample by sample: threshold -15.5 dB of full scale, ratio 10 to 1, hard
/// knee. Only the first channel is read, and is heard on both. A NaN is gone with its sample; an infinite sample
/// silences everything behind it for good: the object has to be made anew. One thread at a time.
class quenlis_compressor {
public:
    /// @param sample_rate  Hz  @param channels  1 or 2  @param block  frames per call
    quenlis_compressor(int sample_rate, int channels, int block);

    /// Compresses one planar block of `channels * block` samples; `out` may be `in`. Never allocates.
    void process(const float* in, float* out);

    /// The reduction wanted, in dB, for a level in dB as the object counts it, full scale being +20.
    static float queryGainComputer(float level_dB);
    /// Root mean square of the reductions so far, with a memory of 10 ms for a factor of ten.
    float applyRmsFilter(float reduction_dB);
    /// Follows a falling value at once and a rising one almost at once.
    float applyCurveLogLin(float rms_dB);

private:
    [[maybe_unused]] int32_t sample_rate_; // Hz, kept for the record
    int32_t channels_;
    int32_t block_;
    float input_offset_ = 20.0F; // dB
    qnl_buffer_32f gains_;
    qnl_buffer_32f levels_;
    qnl_buffer_32f tens_; // the base of the exponent, in one vector operation
    float rms_state_ = 0.0F;
    float curve_state_ = 0.0F;
    float rms_coefficient_;
};
