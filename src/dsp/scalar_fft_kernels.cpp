#include "dsp/fft_kernels.h"

#include <cstddef>
#include <utility>

namespace {

complex32f operator+(complex32f a, complex32f b) {
    return {a.re + b.re, a.im + b.im};
}

complex32f operator-(complex32f a, complex32f b) {
    return {a.re - b.re, a.im - b.im};
}

complex32f times(complex32f a, float factor) {
    return {a.re * factor, a.im * factor};
}

complex32f times_j(complex32f a) {
    return {-a.im, a.re};
}

complex32f conjugate(complex32f a) {
    return {a.re, -a.im};
}

complex32f times_minus_j(complex32f a) {
    return {a.im, -a.re};
}

#include "dsp/fft_butterflies-inl.h"

/// Where output 1 of a group finds its factors; the next output's are `step` further.
struct factor_layout {
    const float* cosine;
    const float* sine;
    int step;
};

factor_layout factors_of(const fft_pass& pass, int group) {
    if (pass.run == 1) {
        const float* const first = pass.rotations + 2 * group;
        return {first, first + 2 * pass.groups, 4 * pass.groups};
    }
    const float* const first = pass.rotations + 2 * (pass.radix / 2) * group;
    return {first, first + 1, 2};
}

template <bool Inverse, int Radix>
void butterflies_of_group(const fft_pass& pass, int group, const complex32f* from, complex32f* to) {
    const factor_layout factors = factors_of(pass, group);
    const bool behind = group >= pass.ahead;
    for (int q = 0; q < pass.run; ++q) {
        const auto value = [&](int k) {
            return from[q + pass.run * (group + place_of<Radix>(k, behind) * pass.groups)];
        };
        const auto angle = [&](int j) {
            const int at = factors.step * (j - 1);
            return turn<float>{factors.cosine[at], factors.sine[at]};
        };
        const auto store = [&](int j, complex32f output) { to[q + pass.run * (Radix * group + j)] = output; };
        if (pass.run == 1 || group != 0)
            butterfly<Radix>::apply(
                value, turned_outputs<Inverse, Radix, decltype(angle), decltype(store)>{angle, store});
        else
            butterfly<Radix>::apply(value, straight_outputs<Inverse, Radix, decltype(store)>{store});
    }
}

template <bool Inverse, int Radix>
void run_pass(const fft_pass& pass, const complex32f* from, complex32f* to) {
    for (int group = 0; group < pass.groups; ++group)
        butterflies_of_group<Inverse, Radix>(pass, group, from, to);
}

template <bool Inverse>
void run_pass(const fft_pass& pass, const complex32f* from, complex32f* to) {
    switch (pass.radix) {
    case 2:
        return run_pass<Inverse, 2>(pass, from, to);
    case 3:
        return run_pass<Inverse, 3>(pass, from, to);
    case 4:
        return run_pass<Inverse, 4>(pass, from, to);
    case 5:
        return run_pass<Inverse, 5>(pass, from, to);
    case 15:
        return run_pass<Inverse, 15>(pass, from, to);
    case 16:
        return run_pass<Inverse, 16>(pass, from, to);
    default:
        return run_pass<Inverse, 8>(pass, from, to);
    }
}

complex32f scaled(complex32f a, inverse_scale by) {
    return by.rest == 0.0F ? times(a, by.power) : times(a, by.power) + times(a, by.rest);
}

template <bool Inverse>
void transform(const fft_plan& plan, const complex32f* in, complex32f* out, complex32f* work) {
    const int size = plan.size();
    complex32f* to = work;
    const complex32f* from = in;
    for (const fft_pass& pass : plan.passes()) {
        run_pass<Inverse>(pass, from, to);
        from = to;
        to = to == work ? work + size : work;
    }
    const auto run = static_cast<int>(plan.order().size());
    for (int i = 0; i < size; ++i) {
        const int bin = plan.order()[static_cast<std::size_t>(i % run)] + i / run * run;
        out[bin < 0 ? bin + size : bin] = Inverse ? scaled(from[i], plan.scale()) : from[i];
    }
}

void transform_either_way(const fft_plan& plan, const complex32f* in, complex32f* out, complex32f* work,
                          bool inverse) {
    if (inverse)
        transform<true>(plan, in, out, work);
    else
        transform<false>(plan, in, out, work);
}

two_values<complex32f> joined(complex32f even, complex32f odd, complex32f quarter, complex32f factors,
                              bool steep) {
    const turn<float> by = {factors.re, factors.im};
    return steep ? joined_halves<true>(even, odd, quarter, by) : joined_halves<false>(even, odd, quarter, by);
}

void expand_real(const complex32f* packed, const complex32f* factors, complex32f* out, int half) {
    out[0] = {packed[0].re + packed[0].im, 0.0F};
    out[half] = {packed[0].re - packed[0].im, 0.0F};
    for (int k = 1; k <= half / 2; ++k) {
        const complex32f value = packed[k];
        const complex32f mirror = conjugate(packed[half - k]);
        const complex32f odd = times(value - mirror, 0.5F);
        const auto bins = joined(times(value + mirror, 0.5F), odd, times_minus_j(odd), factors[k - 1],
                                 k > gentle_bins(half));
        out[k] = bins.first;
        out[half + k] = bins.second;
        out[half - k] = conjugate(bins.second);
        out[2 * half - k] = conjugate(bins.first);
    }
}

void pack_real(const complex32f* bins, const complex32f* factors, complex32f* packed, int half) {
    packed[0] = {0.5F * (bins[0].re + bins[half].re), 0.5F * (bins[0].re - bins[half].re)};
    for (int k = 1; k <= half / 2; ++k) {
        const complex32f a = bins[k] + conjugate(bins[2 * half - k]);
        const complex32f b = bins[half + k] + conjugate(bins[half - k]);
        const complex32f odd = times(a - b, 0.25F);
        const auto values =
            joined(times(a + b, 0.25F), odd, times_j(odd), factors[k - 1], k > gentle_bins(half));
        packed[k] = values.first;
        packed[half - k] = conjugate(values.second);
    }
}

} // namespace

constexpr fft_kernels scalar_fft_kernels = {transform_either_way, expand_real, pack_real};

fft_kernels active_fft_kernels = scalar_fft_kernels;
