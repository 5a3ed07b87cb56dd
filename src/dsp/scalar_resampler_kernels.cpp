#include <cstddef>

#include "dsp/reduction_order.h"
#include "dsp/resampler_kernels.h"

namespace {

double inner_product(const double* samples, const double* taps) {
    double lanes[product_lanes] = {};
    for (std::size_t i = 0; i < resampler_taps; i += product_lanes)
        for (std::size_t lane = 0; lane < product_lanes; ++lane)
            lanes[lane] += samples[i + lane] * taps[i + lane];
    return fold_products(lanes);
}

void inner_products(const double* samples, std::size_t step, std::size_t windows, const double* taps,
                    std::size_t rows, double* sums, std::size_t stride) {
    for (std::size_t window = 0; window < windows; ++window)
        for (std::size_t row = 0; row < rows; ++row)
            sums[window * stride + row] = inner_product(samples + window * step, taps + row * resampler_taps);
}

} // namespace

constexpr resampler_kernels scalar_resampler_kernels = {inner_products};

resampler_kernels active_resampler_kernels = scalar_resampler_kernels;
