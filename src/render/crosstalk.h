/// Loudspeaker rendering: crosstalk cancellation that leaves the centre alone.
#pragma once

#include "conference/flags.h"
#include "dsp/circular_buffer.h"
#include "dsp/fft.h"
#include "dsp/vector_primitives.h"

#include <cstdint>
#include <memory>

/// Prepares a listener's stereo mix for two loudspeakers. What both channels have in common, the centre, is
/// set apart; the rest passes a two-by-two matrix of filters of 2048 taps that cancels the sound of each
/// loudspeaker at the far ear; then the centre is added back, 1.76 dB louder than the rest.
///
/// Works on frames of 1024 per channel at 48 kHz, by convolution in two partitions. Beside the wait for a
/// frame, the centre comes 1536 frames late and the rest 512 more than its filter's main tap, which is near
/// 980.
///
/// Everything is allocated in the constructor. One thread at a time; only the angle may change meanwhile.
/// State is never reset: what a stage that stands still holds comes out first when it goes on. A sample that
/// is not finite spoils the frame it falls into and the four after it.
class quenlis_xtc {
public:
    /// @param block  frames per channel of each call, from 1 to 1024
    /// @param flags  must outlive the object; QNL_CONTROL_HALF_SPAN_ANGLE is read at each frame
    /// The four tables are part of the interface and unused: the filters are compiled in.
    quenlis_xtc(int block, quenlis_flags* flags, void** ltol, void** ltor, void** rtol, void** rtor);

    /// Renders one planar stereo block, full scale 1.0. `in` may be `out`. Gives silence while no frame is
    /// finished: in the first calls and, at 480 frames, once more in call 17.
    void process(const float* in, float* out);

    /// Fills the filters' spectra for the angle in use.
    void generate_filter();
    /// Renders one planar frame, 1024 per channel, in place. A changed angle counts at once, without a fade.
    void process_internal(float* frame);

    /// Replaces a planar frame by the left and right residues of the stretch 512 frames earlier and keeps its
    /// centre for the next frame.
    void extract_center_channel(float* frame);
    /// One windowed analysis, split and synthesis of a planar frame, whose contents are lost.
    /// @param left_overlap, right_overlap, centre_overlap  2048 samples of one chain, kept from call to call
    /// @param out  3072 samples: left, right, centre
    void cx_process_batch_with_k(float* left_overlap, float* right_overlap, float* centre_overlap,
                                 float* frame, float* out);
    /// Scales a planar frame and adds the centre to both of its channels.
    void apply_center_channel_mono(float* frame);

private:
    /// The spectra of the two partitions of a filter, or the two slots of an accumulator.
    static constexpr int both_partitions = 2 * 2048;

    void transform_row(const float* taps, complex32f* spectrum);
    void accumulate(const complex32f* channel, const complex32f* filter, complex32f* sum);
    void finish_slot(complex32f* accumulator, float* overlap, float* channel);

    const quenlis_flags* flags_;
    int32_t block_;
    qnl_buffer_32fc ltol_;
    qnl_buffer_32fc ltor_;
    qnl_buffer_32fc rtor_;
    qnl_buffer_32fc rtol_;
    int32_t angle_ = 15;
    qnl_buffer_32fc left_spectrum_;
    qnl_buffer_32fc right_spectrum_;
    qnl_buffer_32fc product_;
    qnl_buffer_32f left_overlap_;
    qnl_buffer_32f right_overlap_;
    qnl_buffer_32fc left_accumulator_;
    qnl_buffer_32fc right_accumulator_;
    int32_t slot_ = 0;
    quenlis_FFT fft_;

    // Of the centre separation: the even chain works on the frames, the odd one on frames shifted by half.
    qnl_buffer_32fc left_bins_;
    qnl_buffer_32fc right_bins_;
    qnl_buffer_32fc centre_bins_;
    qnl_buffer_32f odd_overlaps_[3];
    qnl_buffer_32f even_overlaps_[3];
    qnl_buffer_32f window_;
    qnl_buffer_32f centre_store_; // due now, then due with the next frame
    qnl_buffer_32f shifted_frame_;
    qnl_buffer_32f previous_frame_;
    qnl_buffer_32f outputs_[3]; // of the even chain before, the odd chain, the even chain

    circular_buffer input_ring_;
    circular_buffer output_ring_;
    qnl_buffer_32f frame_;
};
