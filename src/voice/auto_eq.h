/// Reshapes each talker's voice towards a long-term speech spectrum.
#pragma once

#include "dsp/fft.h"
#include "dsp/vector_primitives.h"
#include "voice/spline.h"

#include <cstdint>
#include <vector>

/// A third-octave band that reaches to the centres beside it, in Hz and in bins.
struct quenlis_auto_eq_band {
    quenlis_auto_eq_band(int sample_rate, int center_hz, int upper_hz, int lower_hz);

    int32_t center_freq;
    int32_t upper_freq;
    int32_t lower_freq;
    int32_t lower_bin;
    int32_t upper_bin;
    int32_t center_bin;
    int32_t gain = 0; // kept for the record, never used
};

/// An equaliser that learns: in blocks that hold speech it compares the talker's average spectrum with a target that
/// follows the talker's pitch, and rebuilds a linear-phase filter of 1024 taps from the difference. The filter runs
/// on every block; a make-up gain keeps the average level of speech.
///
/// Output is 512 samples late. Only the first channel is heard, on both. A NaN or infinity in a block of speech stays
/// in the curves for good, and one before it in the level of the make-up gain: the object has to be made anew. Never
/// allocates after construction. One thread at a time.
class quenlis_auto_EQ {
public:
    /// @param sample_rate  Hz  @param channels  1 or 2  @param block_size  samples per call, up to 1024
    quenlis_auto_EQ(int sample_rate, int channels, int block_size);

    /// Processes one planar block; `out` may be `in`.
    /// @param voice_probability  of this block; only above 0.85 is anything learnt
    /// @param pitch              of this block, Hz
    void process(const float* in, float* out, float voice_probability, int pitch);

    void update_pitch_estimate(int pitch);
    void update_target_curve();
    void compute_rms(const float* block, bool is_input);
    void analyze();
    void filter(float* out);

    int pitch_estimate() const { return pitch_estimate_; }
    const float* target_curve() const { return target_curve_.get(); }
    const float* measured_curve() const { return measured_curve_.get(); }

private:
    void measure_block();
    void place_knots();
    void shape_response();
    void rebuild_filter();

    static constexpr int size_ = 2048;
    static constexpr int bins_ = 1024;
    static constexpr int pitches_ = 300;
    static constexpr int levels_ = 100;

    [[maybe_unused]] int32_t sample_rate_; // Hz, kept for the record
    int32_t channels_;
    int32_t block_size_;
    float smoothing_; // of the measured curve, a time constant of three seconds of speech
    int32_t pitch_estimate_ = 124;
    float pitch_history_[pitches_] = {};
    int32_t pitch_index_ = 0;
    float input_levels_[levels_] = {};
    int32_t input_level_index_ = 0;
    float output_levels_[levels_] = {};
    int32_t output_level_index_ = 0;
    quenlis_FFT analysis_fft_; // two forward transforms: each has its own zero tail
    quenlis_FFT kernel_fft_;
    quenlis_FFT inverse_fft_;
    qnl_buffer_32fc spectrum_;
    qnl_buffer_32f overlap_;
    std::vector<quenlis_auto_eq_band> bands_;
    std::vector<double> knot_bins_;
    std::vector<double> knot_gains_;
    hermite_spline spline_;
    qnl_buffer_32f target_curve_; // dB from here on, but for the filter
    qnl_buffer_32fc filter_spectrum_;
    qnl_buffer_32f measured_curve_;
    qnl_buffer_32f block_db_;
    qnl_buffer_32f difference_;
    std::vector<float> band_gains_;
    qnl_buffer_32f impulse_;
    qnl_buffer_32fc response_;
    qnl_buffer_32f imaginary_zero_;
    qnl_buffer_32f kernel_;
    qnl_buffer_32f gain_curve_;
};
