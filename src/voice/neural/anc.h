/// The neural noise canceller of a talker.
#pragma once

#include "dsp/circular_buffer.h"
#include "dsp/vector_primitives.h"
#include "voice/neural/dtln_model.h"

#include <cstdint>

/// Turns blocks into the network's frames of 480 samples, a hop of 240 apart, and adds the results together.
///
/// Output is late by 480 samples for blocks of 480 and 960, by 992 for 512 and by 1504 for 1024, where the first block
/// passes as it is. Only the first channel is heard, on both. A NaN or infinity stays in the recurrent state for good:
/// the object has to be made anew. Never allocates after construction. One thread at a time.
class quenlis_anc {
public:
    /// @param sample_rate  48000  @param channels  1 or 2  @param block_size  samples per channel and call
    quenlis_anc(int sample_rate, int channels, int block_size);

    /// Cleans one planar block; `out` may be `in`.
    void process(const float* in, float* out);

    /// Cleans 480 samples of one channel; `out` may be `in`.
    void block_shift(const float* in, float* out);

private:
    void shift_blocks(const float* in, float* out, int blocks);
    void process_through_rings(const float* in, float* out);

    static constexpr int frame_ = 480;
    static constexpr int hop_ = 240;

    [[maybe_unused]] int32_t sample_rate_; // kept for the record
    int32_t channels_;
    int32_t block_size_;
    dtln_model model_;
    qnl_buffer_32f frame_scratch_;
    circular_buffer input_ring_;
    circular_buffer output_ring_;
    qnl_buffer_32f current_frame_; // the raw samples of the previous call
    qnl_buffer_32f overlap_tail_;  // the cleaned second half of the last frame
    qnl_buffer_32f frames_;        // those of one call, in time order
};
