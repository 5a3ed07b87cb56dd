#pragma once

#include <cstddef>
#include <cstdint>

// The instruction sets that the kernel files are not compiled for: the ones without gain for this layer over
// their neighbours, and vectors of unknown length. To be said before Highway's first header.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#include <hwy/targets.h>

/// True while a kernel file is compiled for one of Highway's own plain forms: the scalar kernels take its
/// place.
#define QUENLIS_IS_PLAIN_TARGET (HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR)

#include "dsp/vector_kernels.h"

namespace quenlis {

/// Each family's kernels for one of Highway's targets; where the family has none for it, the scalar ones.
const arithmetic_kernels& arithmetic_kernels_of(std::int64_t target);
const complex_kernels& complex_kernels_of(std::int64_t target);
const math_kernels& math_kernels_of(std::int64_t target);
const conversion_kernels& conversion_kernels_of(std::int64_t target);
const fft_kernels& fft_kernels_of(std::int64_t target);
const layer_kernels& layer_kernels_of(std::int64_t target);
const resampler_kernels& resampler_kernels_of(std::int64_t target);
const bin_kernels& bin_kernels_of(std::int64_t target);

/// The entry of a table that HWY_EXPORT made, without touching Highway's own process-wide choice, which the
/// host may be using too.
template <class Kernels, std::size_t Size>
const Kernels& kernels_of(const Kernels& (*const (&exported)[Size])(), std::int64_t target) {
    hwy::ChosenTarget chosen;
    chosen.Update(target);
    return exported[Size == 1 ? 0 : chosen.GetIndex()](); // one entry: the processor family has one target
}

} // namespace quenlis
