/// The filters of a resampler: one prototype, taken at every phase that an output sample can have.
#pragma once

#include "dsp/resampler_kernels.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// The polyphase filter bank from one rate to another, a Kaiser-windowed sinc over 128 input samples on each
/// side. Constant after construction.
class resampler_bank {
public:
    /// Half the span of the filter, in input samples.
    static constexpr int history = 128;

    /// The filters of outputs that lie between the same two input samples: `rows` rows of the table from
    /// `first` on, for the outputs with these numbers in each period.
    struct run {
        std::size_t first;
        std::size_t rows;
        int position; ///< whole input samples from the start of the period
    };

    /// @param input_rate, output_rate  in Hz, above 0
    /// The table has 2 KiB for each of `output_rate` over their greatest common divisor phases.
    resampler_bank(int input_rate, int output_rate);

    /// After this many input samples, and this many output samples, the phases come round again.
    int input_period() const { return input_period_; }
    int output_period() const { return output_period_; }

    const std::vector<run>& runs() const { return runs_; }

    /// 256 taps for each output of a period, one row after the other, from that of `output` on. Tap k is for
    /// the sample at k - 127 from the output's position cut to whole samples. Floats in value; those that lie
    /// one sample of the lower rate apart sum to 1 on the mean of all phases.
    const double* taps(std::size_t output) const { return rows_[output].taps; }

    /// The 257th tap of the phase that falls on an input sample, for the sample 128 before it.
    double outermost_tap() const { return outermost_tap_; }

private:
    struct alignas(64) row {
        double taps[resampler_taps];
    };

    void fill_rows();
    void find_runs();

    int input_period_;
    int output_period_;
    std::vector<row> rows_;
    std::vector<run> runs_;
    double outermost_tap_ = 0.0;
};
