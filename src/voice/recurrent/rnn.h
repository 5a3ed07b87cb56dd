/// The recurrent denoiser in a talker's road: cleans blocks, and reports voice and pitch.
#pragma once

#include "dsp/circular_buffer.h"
#include "dsp/vector_primitives.h"
#include "voice/recurrent/denoiser.h"

#include <cstdint>
#include <memory>

/// Runs the denoiser with the built-in model over blocks of audio of full scale 1.0.
///
/// Output is late by 480 samples for blocks of 480 and 960, by 992 for 512 and by 1504 for 1024, where the first block
/// passes as it is. Voice probability and pitch are not late: they include the newest samples. Never allocates after
/// construction. One thread at a time.
class quenlis_rnn {
public:
    /// @param block_size  samples per channel and call at 48 kHz  @param channels  1 or 2
    quenlis_rnn(int block_size, int channels);

    /// Cleans the first channel of one planar block. `out` may be `in`: then both channels hold the result. With an
    /// `out` of its own the second channel of `in` becomes a copy of the first, on purpose.
    /// @return the voice probability, the largest of the frames, 0 to 1
    float process(float* in, float* out);

    /// Pitch of the newest frame in Hz, 62 to 800, and 0 before the first frame. Without meaning where there is no voice.
    int get_pitch() const;

    /// Cleans 480 samples without a block around them. @param n  480
    float perform_rnn(const float* in, float* out, int n);

private:
    float run_frame(const float* src, float* dst);
    float process_whole_frames(const float* in, float* out);
    float process_through_rings(const float* in, float* out);

    static constexpr int frame_ = denoiser_spectrum::frame_size;

    std::unique_ptr<rnnoise_state, decltype(&rnnoise_destroy)> denoiser_;
    int32_t block_size_;
    int32_t channels_;
    qnl_buffer_32f frame_scratch_;
    circular_buffer input_ring_;
    circular_buffer output_ring_;
};
