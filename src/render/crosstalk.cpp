#include "render/crosstalk.h"

#include "render/centre_channel.h"
#include "render/crosstalk_tables.h"

namespace {

constexpr int frame_size = 1024;
constexpr int fft_size = 2 * frame_size;
static_assert(crosstalk_taps == 2 * frame_size, "a filter is two partitions of a frame each");

} // namespace

quenlis_xtc::quenlis_xtc(int block, quenlis_flags* flags, void** /*ltol*/, void** /*ltor*/, void** /*rtol*/,
                         void** /*rtor*/)
    : flags_(flags),
      block_(block),
      ltol_(qnl_make_buffer_32fc(both_partitions)),
      ltor_(qnl_make_buffer_32fc(both_partitions)),
      rtor_(qnl_make_buffer_32fc(both_partitions)),
      rtol_(qnl_make_buffer_32fc(both_partitions)),
      left_spectrum_(qnl_make_buffer_32fc(fft_size)),
      right_spectrum_(qnl_make_buffer_32fc(fft_size)),
      product_(qnl_make_buffer_32fc(fft_size)),
      left_overlap_(qnl_make_buffer_32f(fft_size)),
      right_overlap_(qnl_make_buffer_32f(fft_size)),
      left_accumulator_(qnl_make_buffer_32fc(both_partitions)),
      right_accumulator_(qnl_make_buffer_32fc(both_partitions)),
      fft_(fft_size, false),
      left_bins_(qnl_make_buffer_32fc(fft_size)),
      right_bins_(qnl_make_buffer_32fc(fft_size)),
      centre_bins_(qnl_make_buffer_32fc(fft_size)),
      window_(make_centre_window()),
      centre_store_(qnl_make_buffer_32f(2 * frame_size)),
      shifted_frame_(qnl_make_buffer_32f(2 * frame_size)),
      previous_frame_(qnl_make_buffer_32f(2 * frame_size)),
      input_ring_(2, 2 * frame_size),
      output_ring_(2, 2 * frame_size),
      frame_(qnl_make_buffer_32f(2 * frame_size)) {
    for (int i = 0; i < 3; ++i) {
        odd_overlaps_[i] = qnl_make_buffer_32f(fft_size);
        even_overlaps_[i] = qnl_make_buffer_32f(fft_size);
        outputs_[i] = qnl_make_buffer_32f(3 * frame_size);
    }
    generate_filter();
}

void quenlis_xtc::generate_filter() {
    fft_.flush();
    transform_row(ltol_speaker_irs[angle_], ltol_.get());
    transform_row(ltor_speaker_irs[angle_], ltor_.get());
    transform_row(rtol_speaker_irs[angle_], rtol_.get());
    transform_row(rtor_speaker_irs[angle_], rtor_.get());
}

void quenlis_xtc::transform_row(const float* taps, complex32f* spectrum) {
    fft_.FFT(taps, frame_size, spectrum, fft_size);
    fft_.FFT(taps + frame_size, frame_size, spectrum + fft_size, fft_size);
}

void quenlis_xtc::process(const float* in, float* out) {
    input_ring_.write_BLOCK(in, block_);
    if (input_ring_.read_BLOCK(frame_.get(), frame_size) == frame_size) {
        process_internal(frame_.get());
        output_ring_.write_BLOCK(frame_.get(), frame_size);
    }
    if (output_ring_.read_BLOCK(out, block_) == 0)
        qnl_zero(out, 2 * block_);
}

void quenlis_xtc::process_internal(float* frame) {
    const int32_t angle = flags_->get_state(QNL_CONTROL_HALF_SPAN_ANGLE);
    if (angle != angle_) {
        angle_ = angle;
        generate_filter();
    }
    extract_center_channel(frame);
    float* const right = frame + frame_size;
    // One after the other, never packed into one transform: equal channels must give equal bins.
    fft_.FFT(frame, frame_size, left_spectrum_.get(), fft_size);
    fft_.FFT(right, frame_size, right_spectrum_.get(), fft_size);
    for (int partition = 0; partition < 2; ++partition) {
        const int filter = partition * fft_size;
        const int slot =
            (slot_ + filter) % both_partitions; // the second partition is due with the next frame
        accumulate(left_spectrum_.get(), &ltol_[filter], &left_accumulator_[slot]);
        accumulate(left_spectrum_.get(), &ltor_[filter], &right_accumulator_[slot]);
        accumulate(right_spectrum_.get(), &rtol_[filter], &left_accumulator_[slot]);
        accumulate(right_spectrum_.get(), &rtor_[filter], &right_accumulator_[slot]);
    }
    finish_slot(&left_accumulator_[slot_], left_overlap_.get(), frame);
    finish_slot(&right_accumulator_[slot_], right_overlap_.get(), right);
    slot_ = (slot_ + fft_size) % both_partitions;
    apply_center_channel_mono(frame);
}

void quenlis_xtc::accumulate(const complex32f* channel, const complex32f* filter, complex32f* sum) {
    qnl_multiply(channel, filter, product_.get(), fft_size);
    qnl_add_I(product_.get(), sum, fft_size);
}

void quenlis_xtc::finish_slot(complex32f* accumulator, float* overlap, float* channel) {
    fft_.IFFT(accumulator, overlap, fft_size);
    qnl_copy(overlap, channel, frame_size);
    qnl_shift_and_clear(overlap, frame_size, fft_size);
    qnl_zero(accumulator, fft_size);
}
