#include "dsp/resampler.h"

#include "dsp/resampler_kernels.h"
#include "dsp/sample_conversion.h"
#include "dsp/vector_kernels.h"

#include <algorithm>
#include <cstddef>

namespace {

constexpr double norm = 0.98; // of every output
constexpr int spare = 2;      // samples of the buffer behind the newest block, never read

int input_block(int output_samples, int input_rate, int output_rate) {
    return static_cast<int>(static_cast<float>(output_samples * input_rate) /
                            static_cast<float>(output_rate));
}

/// Whole steps of `step` samples that it takes to pass all `samples`.
std::size_t steps_past(std::int64_t samples, std::int64_t step) {
    return static_cast<std::size_t>((samples + step - 1) / step);
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
      sums_(steps_past(input_samples, bank_.input_period()) *
            static_cast<std::size_t>(bank_.output_period())) {}

void quenlis_resampler_guts::copy_input(const float* in) {
    qnl_copy(in, buffer_.data() + 2 * history_, input_samples_);
}

void quenlis_resampler_guts::process(float* out) {
    qnl_convert(buffer_.data(), wide_.data(), static_cast<int>(wide_.size()));
    // Positions are counted in whole phases: a running fraction would drift past the end of the block.
    const double* const first = wide_.data() + static_cast<std::ptrdiff_t>(time_);
    for (const resampler_bank::run& run : bank_.runs())
        sum_run(run, first);
    add_outermost_products(first);
    write_sums(out);
    qnl_move(buffer_.data() + input_samples_, buffer_.data(), 2 * history_);
    time_ = history_;
}

void quenlis_resampler_guts::sum_run(const resampler_bank::run& run, const double* first) {
    active_resampler_kernels.inner_products(
        first + run.position + 1 - history_, static_cast<std::size_t>(bank_.input_period()),
        steps_past(input_samples_ - run.position, bank_.input_period()), bank_.taps(run.first), run.rows,
        sums_.data() + run.first, static_cast<std::size_t>(bank_.output_period()));
}

void quenlis_resampler_guts::add_outermost_products(const double* first) {
    const double* sample = first - history_;
    for (std::size_t i = 0; i < sums_.size(); i += static_cast<std::size_t>(bank_.output_period())) {
        sums_[i] += bank_.outermost_tap() * *sample;
        sample += bank_.input_period();
    }
}

void quenlis_resampler_guts::write_sums(float* out) const {
    const double scale = norm * std::min(1.0, static_cast<double>(output_rate_) / input_rate_);
    const std::size_t in_block =
        steps_past(static_cast<std::int64_t>(input_samples_) * bank_.output_period(), bank_.input_period());
    const std::size_t count = std::min(in_block, static_cast<std::size_t>(output_samples_));
    const double* const sums = sums_.data();
    for (std::size_t i = 0; i < count; ++i)
        out[i] = static_cast<float>(sums[i] * scale);
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
