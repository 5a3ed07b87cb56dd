#include "dsp/sample_conversion.h"

#include <cstddef>

#include "dsp/conversion_factors.h"
#include "dsp/vector_kernels.h"

namespace {

std::size_t count(int n) {
    return static_cast<std::size_t>(n);
}

bool nothing_to_do(const void* a, const void* d, int n) {
    return a == nullptr || d == nullptr || n <= 0;
}

} // namespace

void qnl_deinterleave(const short* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_conversion_kernels.deinterleave_short(a, d, d + n, count(n));
}

void qnl_deinterleave(const float* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_complex_kernels.split(reinterpret_cast<const complex32f*>(a), d, d + n, count(n));
}

void qnl_deinterleave(const double* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_conversion_kernels.deinterleave_double(a, d, d + n, count(n));
}

void qnl_interleave(const float* a, short* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_conversion_kernels.interleave_short(a, a + n, d, count(n));
}

void qnl_interleave(const float* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_complex_kernels.join(a, a + n, reinterpret_cast<complex32f*>(d), count(n));
}

void qnl_interleave(const float* a, double* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_conversion_kernels.interleave_double(a, a + n, d, count(n));
}

void qnl_convert(const short* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_conversion_kernels.short_to_float(a, d, count(n));
}

void qnl_convert(const float* a, short* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_conversion_kernels.float_to_short(a, d, count(n));
}

void qnl_convert(const float* a, double* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_conversion_kernels.float_to_double(a, d, count(n));
}

void qnl_convert(const double* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_conversion_kernels.double_to_float(a, d, count(n));
}

void expand_float_to_short_values(float* x, int n) {
    qnl_multiplyC_I(x, to_short_scale, n);
}

void compress_float_to_short_values(float* x, int n) {
    qnl_multiplyC_I(x, from_short_stereo, n);
}

void convert_block_to_pointer(float* block, float** channels, int frames, int number_channels) {
    if (block == nullptr || channels == nullptr || frames < 0)
        return;
    for (int channel = 0; channel < number_channels; ++channel)
        channels[channel] = block + static_cast<std::ptrdiff_t>(channel) * frames;
}

void convert_pointer_to_block(const float* const* channels, float* block, int frames, int number_channels) {
    if (nothing_to_do(channels, block, frames))
        return;
    for (int channel = 0; channel < number_channels; ++channel)
        qnl_move(channels[channel], block + static_cast<std::ptrdiff_t>(channel) * frames, frames);
}
