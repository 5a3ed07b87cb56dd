#include "dsp/resampler.h"

#include "dsp/resampler_kernels.h"
#include "dsp/sample_conversion.h"
#include "dsp/vector_kernels.h"

#include <algorithm>
#include <cstddef>

namespace {

constexpr double norm = 0.98; // of every output
constexpr int spare = 2;      // samples of the buffer behind the newest block, never read

/// The longest input block that an output block stands for.
int input_block(int output_samples, int input_rate, int output_rate) {
    return static_cast<int>(static_cast<float>(output_samples * input_rate) /
                            static_cast<float>(output_rate));
}

std::size_t rounded_up(int samples, int period) {
    return static_cast<std::size_t>((samples + period - 1) / period);
}

} // namespace

quenlis_resampler_guts::quenlis_resampler_guts(int input_rate, int output_rate, int output_samples,
                                               int input_samples)
    : buffer_(static_cast<std::size_t>(input_samples + 2 * resampler_bank::history + spare)),
      input_samples_(input_samples),
      output_samples_(output_samples),
      input_rate_(input_rate),
      output_rate_(output_rate),
      bank_(input_rate, output_rate),
      history_(resampler_bank::history),
      time_(history_),
      wide_(static_cast<std::size_t>(input_samples + 2 * history_)),
      sums_(rounded_up(input_samples, bank_.input_period()) *
            static_cast<std::size_t>(bank_.output_period())) {}

void quenlis_resampler_guts::copy_input(const float* in) {
    qnl_copy(in, buffer_.data() + 2 * history_, input_samples_);
}

void quenlis_resampler_guts::process(float* out) {
    qnl_convert(buffer_.data(), wide_.data(), static_cast<int>(wide_.size()));
    const double scale = norm * std::min(1.0, static_cast<double>(output_rate_) / input_rate_);
    for (const resampler_bank::run& run : bank_.runs())
        write_run(run, scale, out);
    qnl_move(buffer_.data() + input_samples_, buffer_.data(), 2 * history_);
    time_ = history_;
}

void quenlis_resampler_guts::write_run(const resampler_bank::run& run, double scale, float* out) {
    if (run.position >= input_samples_)
        return;
    // Positions are counted in whole phases: a running fraction would drift past the end of the block.
    const double* const centre = wide_.data() + static_cast<std::ptrdiff_t>(time_) + run.position;
    const auto step = static_cast<std::size_t>(bank_.input_period());
    const std::size_t windows = rounded_up(input_samples_ - run.position, bank_.input_period());
    active_kernels.resampler->inner_products(centre + 1 - history_, step, windows,
                                             bank_.taps() + run.first * resampler_taps, run.rows,
                                             sums_.data());
    for (std::size_t window = 0; window < windows; ++window) {
        double* const sums = sums_.data() + window * run.rows;
        if (run.first == 0)
            sums[0] += bank_.outermost_tap() * centre[static_cast<std::ptrdiff_t>(window * step) - history_];
        const std::size_t first = window * static_cast<std::size_t>(bank_.output_period()) + run.first;
        const std::size_t end = std::min(first + run.rows, static_cast<std::size_t>(output_samples_));
        for (std::size_t output = first; output < end; ++output)
            out[output] = static_cast<float>(sums[output - first] * scale);
    }
}

quenlis_resampler::quenlis_resampler(int input_rate, int output_rate, int channels, int output_samples)
    : channels_(channels),
      input_samples_(input_block(output_samples, input_rate, output_rate)),
      output_samples_(output_samples) {
    if (channels < 1)
        return;
    channel_states_.reserve(static_cast<std::size_t>(channels));
    channel_states_.emplace_back(input_rate, output_rate, output_samples, input_samples_);
    // The design of the filters takes long, a copy does not.
    while (channel_states_.size() < static_cast<std::size_t>(channels))
        channel_states_.push_back(channel_states_.front());
}

void quenlis_resampler::process(const float* in, float* out) {
    for (std::int32_t channel = 0; channel < channels_; ++channel)
        channel_states_.at(static_cast<std::size_t>(channel))
            .copy_input(in + static_cast<std::ptrdiff_t>(channel) * input_samples_);
    for (std::int32_t channel = 0; channel < channels_; ++channel)
        channel_states_.at(static_cast<std::size_t>(channel))
            .process(out + static_cast<std::ptrdiff_t>(channel) * output_samples_);
}
