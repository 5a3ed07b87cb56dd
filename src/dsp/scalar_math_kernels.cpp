#include <algorithm>
#include <cmath>
#include <cstddef>

#include "dsp/vector_kernels.h"

namespace {

void hyperbolic_tangent(const float* a, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = std::tanh(a[i]);
}

void common_logarithm(const float* a, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = std::log10(a[i]);
}

void power(const float* a, const float* b, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = std::pow(a[i], b[i]);
}

void phase(const complex32f* a, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = std::atan2(a[i].im, a[i].re);
}

void polar_to_cart(const float* mag, const float* angle, complex32f* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = {mag[i] * std::cos(angle[i]), mag[i] * std::sin(angle[i])};
}

void multiply_by_hann_window(float* x, std::size_t n) {
    const double step = 2.0 * 3.14159265358979323846 / static_cast<double>(n - 1);
    for (std::size_t i = 0; i < n; ++i) {
        const auto distance = static_cast<double>(std::min(i, n - 1 - i));
        x[i] *= static_cast<float>(0.5 - 0.5 * std::cos(step * distance));
    }
}

} // namespace

const math_kernels scalar_math_kernels = {
    hyperbolic_tangent, common_logarithm, power, phase, polar_to_cart, multiply_by_hann_window,
};
