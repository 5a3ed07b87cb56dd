#include "render/centre_channel.h"

#include <cmath>
#include <utility>

#include "dsp/bin_kernels.h"
#include "dsp/vector_kernels.h"
#include "render/crosstalk.h"

namespace {

constexpr int frame_size = 1024;
constexpr int hop = frame_size / 2;
constexpr int fft_size = centre_bins;

constexpr float centre_gain = 1.15F; // applied twice
constexpr float residue_gain = 1.08F;

complex32f sum(complex32f a, complex32f b) {
    return {a.re + b.re, a.im + b.im};
}

complex32f difference(complex32f a, complex32f b) {
    return {a.re - b.re, a.im - b.im};
}

/// One channel's frame of the hop from the chains' outputs: the end of the even chain's last but one, all of
/// the odd chain's, the start of the even chain's last.
void overlap_add(const float* before, const float* odd, const float* even, float* channel) {
    qnl_add(before + hop, odd, channel, hop);
    qnl_add(odd + hop, even, channel + hop, hop);
}

} // namespace

qnl_buffer_32f make_centre_window() {
    qnl_buffer_32f window = qnl_make_buffer_32f(frame_size);
    for (int k = 0; k < frame_size; ++k)
        window[k] = static_cast<float>(std::sqrt(0.5 * (1.0 - std::cos(k * 6.2831855 * 0.0009765625))));
    return window;
}

void separate_left_right_to_center(complex32f* left, complex32f* right, complex32f* centre) {
    const complex32f left_0 = left[0];
    const complex32f right_0 = right[0];
    active_bin_kernels.separate_centre(left, right, centre, centre_bins);
    const complex32f total = sum(left_0, right_0);
    centre[0] = {0.5F * total.re, 0.5F * total.im};
    left[0] = difference(left_0, centre[0]);
    right[0] = difference(right_0, centre[0]);
}

void quenlis_xtc::extract_center_channel(float* frame) {
    float* const shifted = shifted_frame_.get();
    float* const previous = previous_frame_.get();
    for (const int channel : {0, frame_size}) {
        qnl_copy(previous + channel + hop, shifted + channel, hop);
        qnl_copy(frame + channel, shifted + channel + hop, hop);
    }
    qnl_copy(frame, previous, 2 * frame_size);
    cx_process_batch_with_k(even_overlaps_[0].get(), even_overlaps_[1].get(), even_overlaps_[2].get(), frame,
                            outputs_[2].get());
    cx_process_batch_with_k(odd_overlaps_[0].get(), odd_overlaps_[1].get(), odd_overlaps_[2].get(), shifted,
                            outputs_[1].get());
    float* const destinations[3] = {frame, frame + frame_size, &centre_store_[frame_size]};
    for (int i = 0; i < 3; ++i) {
        const int channel = i * frame_size;
        overlap_add(&outputs_[0][channel], &outputs_[1][channel], &outputs_[2][channel], destinations[i]);
    }
    std::swap(outputs_[0], outputs_[2]);
}

void quenlis_xtc::cx_process_batch_with_k(float* left_overlap, float* right_overlap, float* centre_overlap,
                                          float* frame, float* out) {
    qnl_multiply_I(window_.get(), frame, frame_size);
    qnl_multiply_I(window_.get(), frame + frame_size, frame_size);
    fft_.FFT(frame, frame_size, left_bins_.get(), fft_size);
    fft_.FFT(frame + frame_size, frame_size, right_bins_.get(), fft_size);
    separate_left_right_to_center(left_bins_.get(), right_bins_.get(), centre_bins_.get());
    fft_.IFFT(left_bins_.get(), left_overlap, fft_size);
    fft_.IFFT(right_bins_.get(), right_overlap, fft_size);
    fft_.IFFT(centre_bins_.get(), centre_overlap, fft_size);
    for (float* const overlap : {left_overlap, right_overlap, centre_overlap}) {
        qnl_copy(overlap, out, frame_size);
        qnl_shift_and_clear(overlap, frame_size, fft_size);
        qnl_multiply_I(window_.get(), out, frame_size);
        out += frame_size;
    }
}

void quenlis_xtc::apply_center_channel_mono(float* frame) {
    // The whole store each time: every sample lies in it for two frames and is scaled twice, on purpose.
    qnl_multiplyC_I(centre_store_.get(), centre_gain, 2 * frame_size);
    qnl_multiplyC_I(frame, residue_gain, 2 * frame_size);
    qnl_add_I(centre_store_.get(), frame, frame_size);
    qnl_add_I(centre_store_.get(), frame + frame_size, frame_size);
    qnl_shift_and_clear(centre_store_.get(), frame_size, 2 * frame_size);
}
