#include "dsp/fft_kernels.h"

#include <cstddef>
#include <utility>

namespace {

float times(float value, float factor) {
    return value * factor;
}

#include "dsp/fft_butterflies-inl.h"

using complex_float = complex_value<float>;

struct parts {
    float* re;
    float* im;
};

parts parts_at(float* storage, int size) {
    return {storage, storage + size};
}

struct factor_layout {
    const float* re;
    const float* im;
    int step;
};

/// Where output 1 of a group finds its factor; the next output's is `step` further.
factor_layout factors_of(const fft_pass& pass, int group) {
    if (pass.run == 1) {
        const float* const first = pass.rotations + place_of_group(pass, group);
        return {first, first + pass.groups, 2 * pass.groups};
    }
    const float* const first = pass.rotations + 2 * (pass.radix - 1) * group;
    return {first, first + 1, 2};
}

template <int Radix>
void butterflies_of_group(const fft_pass& pass, int group, parts from, parts to) {
    const factor_layout factors = factors_of(pass, group);
    const bool rotates = pass.run == 1 || group != 0;
    for (int q = 0; q < pass.run; ++q) {
        const auto value = [&](int k) {
            const int at = q + pass.run * (group + k * pass.groups);
            return complex_float{from.re[at], from.im[at]};
        };
        butterfly<Radix>::apply(value, [&](int j, complex_float output) {
            const int at = q + pass.run * (Radix * group + j);
            const int factor = factors.step * (j - 1);
            if (rotates && j > 0)
                output = rotated(output, factors.re[factor], factors.im[factor]);
            to.re[at] = output.re;
            to.im[at] = output.im;
        });
    }
}

template <int Radix>
void run_pass(const fft_pass& pass, parts from, parts to) {
    for (int group = 0; group < pass.groups; ++group)
        butterflies_of_group<Radix>(pass, group, from, to);
}

void run_pass(const fft_pass& pass, parts from, parts to) {
    switch (pass.radix) {
    case 2:
        return run_pass<2>(pass, from, to);
    case 3:
        return run_pass<3>(pass, from, to);
    case 4:
        return run_pass<4>(pass, from, to);
    case 5:
        return run_pass<5>(pass, from, to);
    default:
        return run_pass<8>(pass, from, to);
    }
}

// An inverse transform is a forward one with real and imaginary parts exchanged before and after.
void transform(const fft_plan& plan, const complex32f* in, complex32f* out, float* work, bool inverse) {
    const int size = plan.size();
    parts from = parts_at(work, size);
    parts to = parts_at(work + 2 * size, size);
    for (int i = 0; i < size; ++i) {
        from.re[i] = inverse ? in[i].im : in[i].re;
        from.im[i] = inverse ? in[i].re : in[i].im;
    }
    for (const fft_pass& pass : plan.passes()) {
        run_pass(pass, from, to);
        std::swap(from, to);
    }
    const float scale = 1.0F / static_cast<float>(size);
    for (int i = 0; i < size; ++i)
        out[i] =
            inverse ? complex32f{from.im[i] * scale, from.re[i] * scale} : complex32f{from.re[i], from.im[i]};
}

void expand_real(const complex32f* packed, const complex32f* factors, complex32f* out, int half) {
    out[0] = {packed[0].re + packed[0].im, 0.0F};
    out[half] = {packed[0].re - packed[0].im, 0.0F};
    for (int k = 1; k <= half / 2; ++k) {
        const complex32f value = packed[k];
        const complex32f mirror = packed[half - k];
        const complex_float even = scaled(complex_float{value.re + mirror.re, value.im - mirror.im}, 0.5F);
        const complex_float odd = rotated(complex_float{value.re - mirror.re, value.im + mirror.im},
                                          factors[k - 1].re, factors[k - 1].im);
        const complex_float sum = even + odd;
        const complex_float difference = even - odd;
        out[k] = {sum.re, sum.im};
        out[half + k] = {difference.re, difference.im};
        out[half - k] = {difference.re, -difference.im};
        out[2 * half - k] = {sum.re, -sum.im};
    }
}

void pack_real(const complex32f* bins, const complex32f* factors, complex32f* packed, int half) {
    packed[0] = {0.5F * (bins[0].re + bins[half].re), 0.5F * (bins[0].re - bins[half].re)};
    for (int k = 1; k <= half / 2; ++k) {
        const complex32f value = bins[k];
        const complex32f mirror = bins[2 * half - k];
        const complex32f other = bins[half + k];
        const complex32f other_mirror = bins[half - k];
        const complex_float a = {value.re + mirror.re, value.im - mirror.im};
        const complex_float b = {other.re + other_mirror.re, other.im - other_mirror.im};
        const complex_float even = scaled(a + b, 0.25F);
        const complex_float odd = rotated(scaled(a - b, 0.5F), factors[k - 1].re, -factors[k - 1].im);
        const complex_float sum = even + odd;
        const complex_float difference = even - odd;
        packed[k] = {sum.re, sum.im};
        packed[half - k] = {difference.re, -difference.im};
    }
}

} // namespace

const fft_kernels scalar_fft_kernels = {transform, expand_real, pack_real};
