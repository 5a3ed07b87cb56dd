#include "dsp/fft_kernels.h"

#include <cstddef>
#include <utility>

#include "dsp/kernel_tables.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/fft_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quenlis {
namespace HWY_NAMESPACE {
#if QUENLIS_IS_PLAIN_TARGET

const fft_kernels& fft_table() {
    return scalar_fft_kernels;
}

#else
namespace hn = hwy::HWY_NAMESPACE;
namespace {

template <class V>
HWY_INLINE V times(V value, float factor) {
    return hn::Mul(value, hn::Set(hn::DFromV<V>(), factor));
}

#include "dsp/fft_butterflies-inl.h"

struct parts {
    float* re;
    float* im;
};

// The lanes of the first two passes: a run of 8 values can't fill more.
using narrow_tag = hn::CappedTag<float, 8>;
using wide_tag = hn::ScalableTag<float>;

template <class Tag>
using complex_vector = complex_value<hn::Vec<Tag>>;

template <bool Inverse, class Tag>
HWY_INLINE complex_vector<Tag> load(Tag tag, const complex32f* a) {
    complex_vector<Tag> x;
    hn::LoadInterleaved2(tag, reinterpret_cast<const float*>(a), x.re, x.im);
    if (Inverse)
        std::swap(x.re, x.im);
    return x;
}

template <class Tag>
HWY_INLINE complex_vector<Tag> load(Tag tag, parts from, int at) {
    return {hn::Load(tag, from.re + at), hn::Load(tag, from.im + at)};
}

template <class Tag>
HWY_INLINE void store(complex_vector<Tag> x, Tag tag, parts to, int at) {
    hn::Store(x.re, tag, to.re + at);
    hn::Store(x.im, tag, to.im + at);
}

/// Four vectors, lane i of each block of 128 bits gathered in vector i.
template <class Tag>
HWY_INLINE void transpose_blocks(Tag tag, hn::Vec<Tag>& a, hn::Vec<Tag>& b, hn::Vec<Tag>& c,
                                 hn::Vec<Tag>& d) {
    const auto ac_lower = hn::InterleaveLower(tag, a, c);
    const auto ac_upper = hn::InterleaveUpper(tag, a, c);
    const auto bd_lower = hn::InterleaveLower(tag, b, d);
    const auto bd_upper = hn::InterleaveUpper(tag, b, d);
    a = hn::InterleaveLower(tag, ac_lower, bd_lower);
    b = hn::InterleaveUpper(tag, ac_lower, bd_lower);
    c = hn::InterleaveLower(tag, ac_upper, bd_upper);
    d = hn::InterleaveUpper(tag, ac_upper, bd_upper);
}

/// Value 8 i + j of `to` becomes lane i of vector j.
template <class Tag>
HWY_INLINE void store_transposed(Tag tag, hn::Vec<Tag>* x, float* to) {
    transpose_blocks(tag, x[0], x[1], x[2], x[3]);
    transpose_blocks(tag, x[4], x[5], x[6], x[7]);
    for (int i = 0; i < 4; ++i) {
        if constexpr (hn::MaxLanes(Tag()) == 8) {
            hn::Store(hn::ConcatLowerLower(tag, x[4 + i], x[i]), tag, to + 8 * i);
            hn::Store(hn::ConcatUpperUpper(tag, x[4 + i], x[i]), tag, to + 8 * (4 + i));
        } else {
            hn::Store(x[i], tag, to + 8 * i);
            hn::Store(x[4 + i], tag, to + 8 * i + 4);
        }
    }
}

/// The pass with a run of 1 and radix 8. Its lanes are groups.
template <bool Inverse>
HWY_INLINE void first_pass(const fft_pass& pass, const complex32f* in, parts to) {
    const narrow_tag tag;
    using vector = hn::Vec<narrow_tag>;
    for (int group = 0; group < pass.groups; group += static_cast<int>(hn::Lanes(tag))) {
        complex_value<vector> x[8];
        for (int k = 0; k < 8; ++k)
            x[k] = load<Inverse>(tag, in + group + k * pass.groups);
        butterfly<8>::apply(x);
        vector re[8] = {x[0].re};
        vector im[8] = {x[0].im};
        const float* factors = pass.rotations + group;
        for (int j = 1; j < 8; ++j, factors += 2 * pass.groups) {
            const auto turned = rotated(x[j], hn::LoadU(tag, factors), hn::LoadU(tag, factors + pass.groups));
            re[j] = turned.re;
            im[j] = turned.im;
        }
        store_transposed(tag, re, to.re + 8 * group);
        store_transposed(tag, im, to.im + 8 * group);
    }
}

template <int Radix, bool Rotates, class Tag>
HWY_INLINE void butterflies_of_group(Tag tag, const fft_pass& pass, int group, parts from, parts to) {
    const float* const factors = pass.rotations + 2 * (Radix - 1) * group;
    for (int q = 0; q < pass.run; q += static_cast<int>(hn::Lanes(tag))) {
        complex_vector<Tag> x[Radix];
        for (int k = 0; k < Radix; ++k)
            x[k] = load(tag, from, q + pass.run * (group + k * pass.groups));
        butterfly<Radix>::apply(x);
        if (Rotates)
            for (int j = 1; j < Radix; ++j)
                x[j] = rotated(x[j], hn::Set(tag, factors[2 * j - 2]), hn::Set(tag, factors[2 * j - 1]));
        for (int j = 0; j < Radix; ++j)
            store(x[j], tag, to, q + pass.run * (Radix * group + j));
    }
}

template <int Radix, class Tag>
HWY_INLINE void middle_pass(Tag tag, const fft_pass& pass, parts from, parts to) {
    butterflies_of_group<Radix, false>(tag, pass, 0, from, to);
    for (int group = 1; group < pass.groups; ++group)
        butterflies_of_group<Radix, true>(tag, pass, group, from, to);
}

/// The pass with one group.
template <bool Inverse, int Radix, class Tag>
HWY_INLINE void last_pass(Tag tag, const fft_pass& pass, parts from, complex32f* out, float scale) {
    for (int q = 0; q < pass.run; q += static_cast<int>(hn::Lanes(tag))) {
        complex_vector<Tag> x[Radix];
        for (int k = 0; k < Radix; ++k)
            x[k] = load(tag, from, q + pass.run * k);
        butterfly<Radix>::apply(x);
        for (int j = 0; j < Radix; ++j) {
            auto* const to = reinterpret_cast<float*>(out + q + pass.run * j);
            if (Inverse)
                hn::StoreInterleaved2(times(x[j].im, scale), times(x[j].re, scale), tag, to);
            else
                hn::StoreInterleaved2(x[j].re, x[j].im, tag, to);
        }
    }
}

/// Calls operation(tag, radix) with the widest tag that a run can fill, and the radix as a constant.
template <class Operation>
HWY_INLINE void with_shape_of(const fft_pass& pass, Operation operation) {
    const auto with_radix = [&](auto tag) HWY_ATTR {
        switch (pass.radix) {
        case 3:
            return operation(tag, std::integral_constant<int, 3>());
        case 4:
            return operation(tag, std::integral_constant<int, 4>());
        case 5:
            return operation(tag, std::integral_constant<int, 5>());
        default:
            return operation(tag, std::integral_constant<int, 8>());
        }
    };
    if (pass.run % static_cast<int>(hn::Lanes(wide_tag())) == 0)
        with_radix(wide_tag());
    else
        with_radix(narrow_tag());
}

// An inverse transform is a forward one with real and imaginary parts exchanged before and after.
template <bool Inverse>
void transform(const fft_plan& plan, const complex32f* in, complex32f* out, float* work) {
    const int size = plan.size();
    const auto& passes = plan.passes();
    parts from = {work, work + size};
    parts to = {work + 2 * size, work + 3 * size};
    first_pass<Inverse>(passes.front(), in, from);
    for (std::size_t i = 1; i + 1 < passes.size(); ++i) {
        with_shape_of(passes[i], [&](auto tag, auto radix) HWY_ATTR {
            middle_pass<decltype(radix)::value>(tag, passes[i], from, to);
        });
        std::swap(from, to);
    }
    with_shape_of(passes.back(), [&](auto tag, auto radix) HWY_ATTR {
        last_pass<Inverse, decltype(radix)::value>(tag, passes.back(), from, out,
                                                   1.0F / static_cast<float>(size));
    });
}

bool fits_vectors(const fft_plan& plan) {
    return plan.passes().size() > 1 && plan.passes()[0].radix == 8 && plan.passes()[0].groups % 8 == 0;
}

void transform_either_way(const fft_plan& plan, const complex32f* in, complex32f* out, float* work,
                          bool inverse) {
    if (!fits_vectors(plan))
        scalar_fft_kernels.transform(plan, in, out, work, inverse);
    else if (inverse)
        transform<true>(plan, in, out, work);
    else
        transform<false>(plan, in, out, work);
}

void expand_real(const complex32f* packed, const complex32f* factors, complex32f* out, int half) {
    const wide_tag tag;
    const int lanes = static_cast<int>(hn::Lanes(tag));
    if (half / 2 % lanes != 0)
        return scalar_fft_kernels.expand_real(packed, factors, out, half);
    out[0] = {packed[0].re + packed[0].im, 0.0F};
    out[half] = {packed[0].re - packed[0].im, 0.0F};
    for (int k = 1; k <= half / 2; k += lanes) {
        const int mirrored = half - k - lanes + 1;
        const auto value = load<false>(tag, packed + k);
        const auto mirror = load<false>(tag, packed + mirrored);
        const auto factor = load<false>(tag, factors + k - 1);
        const auto pair = untangled(value, {hn::Reverse(tag, mirror.re), hn::Reverse(tag, mirror.im)},
                                    factor.re, factor.im);
        const auto& other = pair.conjugate_of_mirror;
        const auto store_at = [&](int at, auto re, auto im) HWY_ATTR {
            hn::StoreInterleaved2(re, im, tag, reinterpret_cast<float*>(out + at));
        };
        store_at(k, pair.value.re, pair.value.im);
        store_at(half + k, other.re, other.im);
        store_at(mirrored, hn::Reverse(tag, other.re), hn::Neg(hn::Reverse(tag, other.im)));
        store_at(half + mirrored, hn::Reverse(tag, pair.value.re), hn::Neg(hn::Reverse(tag, pair.value.im)));
    }
}

} // namespace

const fft_kernels& fft_table() {
    static constexpr fft_kernels table = {transform_either_way, expand_real};
    return table;
}

#endif
} // namespace HWY_NAMESPACE
} // namespace quenlis
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quenlis {
HWY_EXPORT(fft_table);

const fft_kernels& fft_kernels_of(std::int64_t target) {
    return kernels_of(HWY_DISPATCH_TABLE(fft_table), target);
}
} // namespace quenlis
#endif
