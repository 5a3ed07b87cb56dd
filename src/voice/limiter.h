/// The last protection of a listener's output.
#pragma once

#include "dsp/vector_primitives.h"

#include <cstdint>

/// A look-ahead peak limiter. Both channels share one gain, which never exceeds 1. There is no final clipping: a
/// sudden peak may pass a little above the threshold, since the gain is 98.7% of the way there when it leaves at
/// the settings of a participant. An infinite sample counts as 9e20 and turns the gain down to nearly nothing,
/// from which the release recovers; so does a NaN on the right, while one on the left goes by. The sample itself leaves
/// the limiter as it came. One thread at a time.
class quenlis_limiter {
public:
    /// @param threshold_dB  ceiling in dB below full scale 1.0
    /// @param attack_ms     time to come within 1% of a higher peak, and the delay of the audio
    /// @param sample_rate   Hz
    /// @param channels      1 or 2
    /// @param block         frames per call
    quenlis_limiter(float threshold_dB, float attack_ms, int sample_rate, int channels, int block);

    /// Limits one planar block. It comes out attack_ms late, rounded down to whole frames.
    /// @param in   room for `2 * block` samples, also of a limiter for one channel
    /// @param out  `channels * block` samples; may be `in`
    /// Never allocates.
    void process(const float* in, float* out);

private:
    void follow_peaks();
    void delay(const float* in);
    void delay_channel(const float* in, float* line) const;
    float next_envelope(float peak);

    [[maybe_unused]] int32_t sample_rate_; // Hz, kept for the record
    int32_t channels_;
    int32_t block_;
    float coefficients_[2]; // one-pole: attack, then release
    float threshold_;
    qnl_buffer_32f magnitudes_; // left, then right; of one channel the right half stays zero
    qnl_buffer_32f peaks_;
    int32_t look_ahead_;
    qnl_buffer_32f left_delay_;
    qnl_buffer_32f right_delay_;
    qnl_buffer_32f gains_;
    int32_t hold_counter_ = 0;
    float held_peak_;
    [[maybe_unused]] float attack_;  // ms, kept for the record
    [[maybe_unused]] float release_; // ms, likewise
    float envelope_;
    qnl_buffer_32f envelope_block_;
};
