#include "voice/recurrent/rnn.h"

#include "dsp/sample_conversion.h"

#include <algorithm>

namespace {

constexpr int ring_size = 4096;
constexpr int scratch_size = 2048;

} // namespace

quenlis_rnn::quenlis_rnn(int block_size, int channels)
    : denoiser_(rnnoise_create(nullptr), &rnnoise_destroy),
      block_size_(block_size),
      channels_(channels),
      frame_scratch_(qnl_make_buffer_32f(frame_)),
      input_ring_(1, ring_size),
      output_ring_(1, ring_size) {}

float quenlis_rnn::process(float* in, float* out) {
    const bool whole_frames = block_size_ == frame_ || block_size_ == 2 * frame_;
    const float voice_probability =
        whole_frames ? process_whole_frames(in, out) : process_through_rings(in, out);
    if (channels_ >= 2)
        qnl_copy(in, in + block_size_, block_size_);
    return voice_probability;
}

float quenlis_rnn::process_whole_frames(const float* in, float* out) {
    float voice_probability = 0.0F;
    for (int32_t start = 0; start < block_size_; start += frame_)
        voice_probability = std::max(voice_probability, run_frame(in + start, out + start));
    return voice_probability;
}

float quenlis_rnn::process_through_rings(const float* in, float* out) {
    float voice_probability = 0.0F;
    input_ring_.write_BLOCK(in, block_size_);
    while (input_ring_.read_BLOCK(frame_scratch_.get(), frame_) != 0) {
        voice_probability =
            std::max(voice_probability, run_frame(frame_scratch_.get(), frame_scratch_.get()));
        output_ring_.write_BLOCK(frame_scratch_.get(), frame_);
    }
    // The first read fails and leaves the block as it is. This is wanted.
    output_ring_.read_BLOCK(out, block_size_);
    if (channels_ == 2)
        qnl_copy(out, out + block_size_, block_size_);
    return voice_probability;
}

float quenlis_rnn::run_frame(const float* src, float* dst) {
    float frame[frame_];
    qnl_copy(src, frame, frame_);
    expand_float_to_short_values(frame, frame_);
    const float voice_probability = rnnoise_process_frame(denoiser_.get(), dst, frame);
    compress_float_to_short_values(dst, frame_);
    return std::max(0.0F, voice_probability);
}

int quenlis_rnn::get_pitch() const {
    const int period = rnnoise_get_pitch(denoiser_.get());
    return period > 0 ? static_cast<int>(48000.0F / static_cast<float>(period)) : 0;
}

float quenlis_rnn::perform_rnn(const float* in, float* out, int n) {
    float scratch[scratch_size] = {};
    qnl_copy(in, scratch, frame_);
    expand_float_to_short_values(scratch, n);
    float voice_probability = 0.0F;
    for (int frame = 0; frame < n / frame_; ++frame)
        voice_probability =
            std::max(voice_probability,
                     rnnoise_process_frame(denoiser_.get(), out + frame * frame_, scratch + frame * frame_));
    compress_float_to_short_values(out, n);
    return voice_probability;
}
