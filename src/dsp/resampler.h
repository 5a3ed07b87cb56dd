/// Fixed blocks from one sampling rate to another.
#pragma once

#include "dsp/resampler_bank.h"
#include "dsp/vector_primitives.h"

#include <cstdint>
#include <vector>

/// One channel of a resampler. Copies go on from the same state, apart from each other.
class quenlis_resampler_guts {
public:
    /// @param input_rate, output_rate         in Hz, above 0
    /// @param output_samples, input_samples   of one block, above 0
    quenlis_resampler_guts(int input_rate, int output_rate, int output_samples, int input_samples);

    /// Takes in the next block: `input_samples` samples.
    void copy_input(const float* in);

    /// Makes one block of what was taken in last: one output for each position of the input block, which is
    /// `output_samples` where the ratio of the blocks is that of the rates. Never more, and where it is not,
    /// the rest of `out` is left as it is. Never allocates.
    void process(float* out);

private:
    /// @param first  where output 0 lies in the widened buffer
    void sum_run(const resampler_bank::run& run, const double* first);
    void add_outermost_products(const double* first);
    void write_sums(float* out) const;

    std::vector<float> buffer_; // history, then the newest block
    std::int32_t input_samples_;
    std::int32_t output_samples_;
    std::int32_t input_rate_;
    std::int32_t output_rate_;
    resampler_bank bank_;
    std::int32_t history_;
    double time_;              // position in the buffer of the next block's first output
    std::vector<double> wide_; // the buffer, widened
    std::vector<double> sums_; // one for each output of whole periods
};

/// Brings blocks from one sampling rate to another, each call exactly one block in and one block out. Every
/// block starts at the same phase, so the ratio of the block lengths must be that of the rates.
///
/// The output is 128 input frames late, whatever the ratio. It is 0.98 times the input at low frequencies and
/// 6 dB less at 0.95 of the lower rate's Nyquist frequency. Nothing is clipped: a step may overshoot.
/// Channels don't touch each other. One thread at a time.
class quenlis_resampler {
public:
    /// @param input_rate, output_rate  in Hz, above 0
    /// @param channels                 below 1 makes an object that does nothing
    /// @param output_samples           frames of an output block, above 0; an input block has
    ///                                 output_samples * input_rate / output_rate, cut to a whole number
    quenlis_resampler(int input_rate, int output_rate, int channels, int output_samples);

    /// @param in   planar, one input block of each channel
    /// @param out  planar, one output block of each channel; may be `in`, then with room for the longer one
    /// Where the ratio of the blocks is not exact, the last frames of `out` may be left as they are.
    /// Never allocates.
    void process(const float* in, float* out);

private:
    std::vector<quenlis_resampler_guts> channel_states_;
    std::int32_t channels_;
    std::int32_t input_samples_;
    std::int32_t output_samples_;
};
