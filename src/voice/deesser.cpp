#include "voice/deesser.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double per_44100_hz = 2.2675736961451248e-5;
constexpr double instead_of_infinity = 8.999999828524175e+20;

double overall(int sample_rate) {
    return sample_rate * per_44100_hz;
}

} // namespace

quenlis_deesser::quenlis_deesser(int sample_rate, int channels, int block)
    : sample_rate_(sample_rate),
      channels_(channels),
      block_(block),
      intensity_(8192.0 / overall(sample_rate) * 0.03125),
      intensity_squared_(intensity_ * intensity_),
      smoothing_amount_(0.25 / overall(sample_rate)) {}

void quenlis_deesser::process(const float* in, float* out) {
    for (int32_t i = 0; i < block_; ++i) {
        out[i] = process_sample<true>(left_, in[i]);
        if (channels_ == 2)
            out[block_ + i] = process_sample<false>(right_, in[block_ + i]);
        flip_ = !flip_;
    }
}

/// The ratio that a sample asks for, and how slowly it is to be reached.
double quenlis_deesser::sense_sibilance(channel_state& state, double x, double& attack) const {
    state.s3 = state.s2;
    state.s2 = state.s1;
    state.s1 = x;
    const double d1 = state.s1 - state.s2;
    const double d2 = state.s2 - state.s3;
    const double m1 = d1 * (d1 / 1.3);
    const double m2 = d2 * (d1 / 1.3); // by the newer difference as well
    const double sense = std::abs((m1 - m2) / 1.3 * (m1 - m2));
    attack = sense * 1024.0 + 7.0;
    return std::min(intensity_, sense * intensity_squared_ + 1.0);
}

/// @tparam Guarded  whether a smooth value may become infinite; the left channel alone is guarded, on purpose
template <bool Guarded>
float quenlis_deesser::process_sample(channel_state& state, float x) const {
    double attack = 0.0;
    const double sense = sense_sibilance(state, x, attack);
    const double recovery = 0.01 / sense + 1.0;
    double& ratio = state.ratio[flip_ ? 0 : 1];
    double& smooth = state.smooth[flip_ ? 0 : 1];

    const long double wide_x = x;
    const long double share = (1.0L - std::abs(wide_x)) * smoothing_amount_;
    smooth = static_cast<double>(wide_x * share + (1.0L - share) * smooth);
    if (Guarded && std::isinf(smooth))
        smooth = instead_of_infinity;
    // The processor's flush to zero does not reach the wide format, and denormals are slow there.
    if (std::abs(smooth) < std::numeric_limits<double>::min())
        smooth = 0.0;

    ratio = sense > ratio ? (sense + ratio * attack) / (attack + 1.0) : (ratio - 1.0) / recovery + 1.0;
    if (ratio > maximum_ratio_)
        ratio = maximum_ratio_;
    return static_cast<float>(smooth + (wide_x - smooth) / ratio);
}
