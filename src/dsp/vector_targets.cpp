#include "dsp/vector_targets.h"

#include <cstdint>
#include <vector>

#include "dsp/bin_kernels.h"
#include "dsp/fft_kernels.h"
#include "dsp/layer_kernels.h"
#include "dsp/resampler_kernels.h"
#include "dsp/vector_kernels.h"

#ifndef QUENLIS_SCALAR_ONLY
#include "dsp/kernel_tables.h"
#endif

namespace {

constexpr vector_kernels scalar_kernels = {
    &scalar_arithmetic_kernels, &scalar_complex_kernels, &scalar_math_kernels,
    &scalar_conversion_kernels, &scalar_fft_kernels,     &scalar_layer_kernels,
    &scalar_resampler_kernels,  &scalar_bin_kernels,
};

struct vector_target {
    const char* name;
    vector_kernels kernels;
};

std::vector<vector_target> offered_targets() {
    std::vector<vector_target> targets = {{"scalar", scalar_kernels}};
#ifndef QUENLIS_SCALAR_ONLY
    const std::int64_t offered = hwy::SupportedTargets() & HWY_TARGETS & ~(HWY_EMU128 | HWY_SCALAR);
    // In Highway's numbering the better target has the lower bit.
    for (int bit = 62; bit >= 0; --bit) {
        const std::int64_t target = offered & (std::int64_t{1} << bit);
        if (target != 0)
            targets.push_back({hwy::TargetName(target),
                               {&quenlis::arithmetic_kernels_of(target), &quenlis::complex_kernels_of(target),
                                &quenlis::math_kernels_of(target), &quenlis::conversion_kernels_of(target),
                                &quenlis::fft_kernels_of(target), &quenlis::layer_kernels_of(target),
                                &quenlis::resampler_kernels_of(target), &quenlis::bin_kernels_of(target)}});
    }
#endif
    return targets;
}

const std::vector<vector_target>& targets() {
    static const std::vector<vector_target> list = offered_targets();
    return list;
}

int active_index = 0;

} // namespace

void qnl_start_vector_layer() {
    select_vector_target(vector_target_count() - 1);
}

int vector_target_count() {
    return static_cast<int>(targets().size());
}

const char* vector_target_name(int index) {
    return targets()[static_cast<std::size_t>(index)].name;
}

int active_vector_target() {
    return active_index;
}

void select_vector_target(int index) {
    const vector_kernels& chosen = targets()[static_cast<std::size_t>(index)].kernels;
    active_arithmetic_kernels = *chosen.arithmetic;
    active_complex_kernels = *chosen.complex;
    active_math_kernels = *chosen.math;
    active_conversion_kernels = *chosen.conversion;
    active_fft_kernels = *chosen.fft;
    active_layer_kernels = *chosen.layers;
    active_resampler_kernels = *chosen.resampler;
    active_bin_kernels = *chosen.bins;
    active_index = index;
}
