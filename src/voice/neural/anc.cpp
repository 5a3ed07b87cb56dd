#include "voice/neural/anc.h"

namespace {

constexpr int ring_size = 2048;

} // namespace

quenlis_anc::quenlis_anc(int sample_rate, int channels, int block_size)
    : sample_rate_(sample_rate),
      channels_(channels),
      block_size_(block_size),
      model_(0),
      frame_scratch_(qnl_make_buffer_32f(frame_)),
      input_ring_(1, ring_size),
      output_ring_(1, ring_size),
      current_frame_(qnl_make_buffer_32f(frame_)),
      overlap_tail_(qnl_make_buffer_32f(hop_)),
      frames_(qnl_make_buffer_32f(qnl_nn_max_frames * frame_)) {}

void quenlis_anc::process(const float* in, float* out) {
    if (block_size_ == 2 * frame_)
        shift_blocks(in, out, 2);
    else if (block_size_ == frame_)
        shift_blocks(in, out, 1);
    else
        process_through_rings(in, out);
    if (channels_ == 2)
        qnl_copy(out, out + block_size_, block_size_);
}

void quenlis_anc::process_through_rings(const float* in, float* out) {
    input_ring_.write_BLOCK(in, block_size_);
    while (input_ring_.read_BLOCK(frame_scratch_.get(), frame_) != 0) {
        block_shift(frame_scratch_.get(), frame_scratch_.get());
        output_ring_.write_BLOCK(frame_scratch_.get(), frame_);
    }
    // The first read fails and leaves the block as it is. This is wanted.
    output_ring_.read_BLOCK(out, block_size_);
}

void quenlis_anc::block_shift(const float* in, float* out) {
    shift_blocks(in, out, 1);
}

/// For each block two frames: the samples of the call before, and those that straddle both. All are known before the
/// first one runs, so the network takes them together.
void quenlis_anc::shift_blocks(const float* in, float* out, int blocks) {
    float* const frames = frames_.get();
    const float* previous = current_frame_.get();
    for (int block = 0; block < blocks; ++block) {
        float* const frame = frames + 2 * block * frame_;
        const float* const next = in + block * frame_;
        qnl_copy(previous, frame, frame_);
        qnl_copy(previous + hop_, frame + frame_, hop_);
        qnl_copy(next, frame + frame_ + hop_, hop_);
        previous = next;
    }
    qnl_copy(previous, current_frame_.get(), frame_);
    model_.process(frames, frames, 2 * blocks);

    const float* tail = overlap_tail_.get();
    for (int frame = 0; frame < 2 * blocks; ++frame) {
        const float* const cleaned = frames + frame * frame_;
        qnl_add(cleaned, tail, out + frame * hop_, hop_);
        tail = cleaned + hop_;
    }
    qnl_copy(tail, overlap_tail_.get(), hop_);
}
