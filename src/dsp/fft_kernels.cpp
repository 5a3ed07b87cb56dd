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

#define INLINE_HWY_ATTR HWY_ATTR __attribute__((always_inline))

template <class V>
HWY_INLINE V times(V value, float factor) {
    return hn::Mul(value, hn::Set(hn::DFromV<V>(), factor));
}

#include "dsp/fft_butterflies-inl.h"

// The lanes of the passes at both ends, and of the second one: a run of 8 values can't fill more.
using narrow_tag = hn::CappedTag<float, 8>;
using wide_tag = hn::ScalableTag<float>;

template <class Tag>
using complex_vector = complex_value<hn::Vec<Tag>>;

struct parts {
    float* re;
    float* im;
};

HWY_INLINE parts operator+(parts a, std::ptrdiff_t values) {
    return {a.re + values, a.im + values};
}

template <class Tag>
HWY_INLINE complex_vector<Tag> load(Tag tag, parts from) {
    return {hn::LoadU(tag, from.re), hn::LoadU(tag, from.im)};
}

template <class Tag>
HWY_INLINE void store(complex_vector<Tag> x, Tag tag, parts to) {
    hn::StoreU(x.re, tag, to.re);
    hn::StoreU(x.im, tag, to.im);
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

/// Stores eight outputs of each group in the order 0 1 4 5 2 3 6 7, which spares the last pass half of its
/// shuffling. The lanes are groups in the order of load_groups.
template <class Tag>
HWY_INLINE void store_groups(hn::Vec<Tag>* x, Tag tag, float* to, std::ptrdiff_t group) {
    transpose_blocks(tag, x[0], x[1], x[4], x[5]);
    transpose_blocks(tag, x[2], x[3], x[6], x[7]);
    float* const first = to + 8 * ((group & ~7) + (group & 4) / 2);
    constexpr int halves[8] = {0, 1, 4, 5, 2, 3, 6, 7};
    for (int i = 0; i < 4; ++i) {
        const auto a = x[halves[i]];
        const auto b = x[halves[4 + i]];
        float* const row = first + 8 * (i / 2 + 4 * (i % 2));
        if constexpr (hn::MaxLanes(Tag()) == 8) {
            hn::StoreU(hn::ConcatLowerLower(tag, b, a), tag, row);
            hn::StoreU(hn::ConcatUpperUpper(tag, b, a), tag, row + 16);
        } else {
            hn::StoreU(a, tag, row);
            hn::StoreU(b, tag, row + 4);
        }
    }
}

/// Values of one group for each lane, from group `group` on: of eight groups they come in the order
/// 0 4 1 5 2 6 3 7, which takes the least shuffling.
template <bool Inverse, class Tag>
HWY_INLINE complex_vector<Tag> load_groups(Tag tag, const complex32f* in, std::ptrdiff_t group) {
    const auto* const first = reinterpret_cast<const float*>(in + (group & ~7) + (group & 4) / 2);
    const auto a = hn::LoadU(tag, first);
    const auto b = hn::LoadU(tag, first + 8);
    const complex_vector<Tag> x = {hn::OddEven(hn::Shuffle2301(b), a), hn::OddEven(b, hn::Shuffle2301(a))};
    return Inverse ? complex_vector<Tag>{x.im, x.re} : x;
}

/// The pass with a run of 1 and radix 8. Its lanes are groups.
template <bool Inverse>
void first_pass(const fft_pass& pass, const complex32f* in, parts to) {
    const narrow_tag tag;
    using vector = hn::Vec<narrow_tag>;
    const std::ptrdiff_t groups = pass.groups;
    const float* const rotations = pass.rotations;
    for (std::ptrdiff_t group = 0; group < groups; group += static_cast<std::ptrdiff_t>(hn::Lanes(tag))) {
        vector re[8];
        vector im[8];
        const auto value = [=](std::ptrdiff_t k)
                               INLINE_HWY_ATTR { return load_groups<Inverse>(tag, in + k * groups, group); };
        butterfly<8>::apply(value, [&](std::ptrdiff_t j, auto output) INLINE_HWY_ATTR {
            if (j > 0) {
                const float* const factors = rotations + group + 2 * groups * (j - 1);
                output = rotated(output, hn::LoadU(tag, factors), hn::LoadU(tag, factors + groups));
            }
            re[j] = output.re;
            im[j] = output.im;
        });
        store_groups(re, tag, to.re, group);
        store_groups(im, tag, to.im, group);
    }
}

template <int Radix, bool Rotates, class Tag>
HWY_INLINE void butterflies_of_group(Tag tag, std::ptrdiff_t run, std::ptrdiff_t groups, const float* factors,
                                     parts from, parts to) {
    for (std::ptrdiff_t q = 0; q < run; q += static_cast<std::ptrdiff_t>(hn::Lanes(tag))) {
        const auto value = [=](std::ptrdiff_t k)
                               INLINE_HWY_ATTR { return load(tag, from + (q + run * groups * k)); };
        butterfly<Radix>::apply(value, [=](std::ptrdiff_t j, auto output) INLINE_HWY_ATTR {
            if (Rotates && j > 0)
                output = rotated(output, hn::Set(tag, factors[2 * j - 2]), hn::Set(tag, factors[2 * j - 1]));
            store(output, tag, to + (q + run * j));
        });
    }
}

template <int Radix, class Tag>
void middle_pass(Tag tag, const fft_pass& pass, parts from, parts to) {
    const std::ptrdiff_t run = pass.run;
    const std::ptrdiff_t groups = pass.groups;
    const float* factors = pass.rotations;
    butterflies_of_group<Radix, false>(tag, run, groups, factors, from, to);
    for (std::ptrdiff_t group = 1; group < groups; ++group) {
        factors += 2 * (Radix - 1);
        butterflies_of_group<Radix, true>(tag, run, groups, factors, from + run * group,
                                          to + Radix * run * group);
    }
}

/// Stores values from q on, whose lanes come in the order of store_groups.
template <class Tag>
HWY_INLINE void store_in_order(complex_vector<Tag> x, Tag tag, complex32f* out, std::ptrdiff_t q) {
    auto* const to = reinterpret_cast<float*>(out + (q & ~7) + (q & 4) / 2);
    hn::StoreU(hn::InterleaveLower(tag, x.re, x.im), tag, to);
    hn::StoreU(hn::InterleaveUpper(tag, x.re, x.im), tag, to + 8);
}

/// The pass with one group.
template <bool Inverse, int Radix, class Tag>
void last_pass(Tag tag, const fft_pass& pass, parts from, complex32f* out, float scale) {
    const std::ptrdiff_t run = pass.run;
    for (std::ptrdiff_t q = 0; q < run; q += static_cast<std::ptrdiff_t>(hn::Lanes(tag))) {
        const auto value = [=](std::ptrdiff_t k) INLINE_HWY_ATTR { return load(tag, from + (q + run * k)); };
        butterfly<Radix>::apply(value, [=](std::ptrdiff_t j, auto output) INLINE_HWY_ATTR {
            if (Inverse)
                output = {times(output.im, scale), times(output.re, scale)};
            store_in_order(output, tag, out + run * j, q);
        });
    }
}

/// Calls operation(radix) with the radix as a constant.
template <class Operation>
HWY_INLINE void with_radix_of(const fft_pass& pass, Operation operation) {
    switch (pass.radix) {
    case 3:
        return operation(std::integral_constant<int, 3>());
    case 4:
        return operation(std::integral_constant<int, 4>());
    case 5:
        return operation(std::integral_constant<int, 5>());
    default:
        return operation(std::integral_constant<int, 8>());
    }
}

void any_middle_pass(const fft_pass& pass, parts from, parts to) {
    with_radix_of(pass, [&](auto radix) HWY_ATTR {
        if (pass.run % static_cast<int>(hn::Lanes(wide_tag())) == 0)
            middle_pass<decltype(radix)::value>(wide_tag(), pass, from, to);
        else
            middle_pass<decltype(radix)::value>(narrow_tag(), pass, from, to);
    });
}

template <bool Inverse>
void any_last_pass(const fft_pass& pass, parts from, complex32f* out, float scale) {
    with_radix_of(pass, [&](auto radix) HWY_ATTR {
        last_pass<Inverse, decltype(radix)::value>(narrow_tag(), pass, from, out, scale);
    });
}

// An inverse transform is a forward one with real and imaginary parts exchanged before and after. All but the
// first pass go to and fro between `out` and one half of the work space, to stay within the fastest cache.
template <bool Inverse>
void transform(const fft_plan& plan, const complex32f* in, complex32f* out, float* work) {
    const int size = plan.size();
    const auto& passes = plan.passes();
    const parts halves[2] = {{work, work + size},
                             {reinterpret_cast<float*>(out), reinterpret_cast<float*>(out) + size}};
    const parts spare = {work + 2 * size, work + 3 * size};
    const std::size_t last = passes.size() - 1;
    parts from = halves[(last + 1) % 2];
    if (last % 2 == 0 && in == out)
        from = spare;
    first_pass<Inverse>(passes.front(), in, from);
    for (std::size_t i = 1; i < last; ++i) {
        const parts to = halves[(last - i + 1) % 2];
        any_middle_pass(passes[i], from, to);
        from = to;
    }
    any_last_pass<Inverse>(passes.back(), from, out, 1.0F / static_cast<float>(size));
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

/// Vectors of complex values side by side.
struct bin_vectors {
    using vector = hn::Vec<wide_tag>;

    static constexpr wide_tag tag{};

    static HWY_INLINE int count() { return static_cast<int>(hn::Lanes(tag) / 2); }
    static HWY_INLINE vector load(const complex32f* a) {
        return hn::LoadU(tag, reinterpret_cast<const float*>(a));
    }
    static HWY_INLINE void store(vector x, complex32f* d) { hn::StoreU(x, tag, reinterpret_cast<float*>(d)); }
    static HWY_INLINE vector conjugate(vector x) {
        return hn::Xor(x, hn::OddEven(hn::Set(tag, -0.0F), hn::Zero(tag)));
    }
    static HWY_INLINE vector conjugate_in_reverse(vector x) {
        const hn::Repartition<std::uint64_t, wide_tag> pairs;
        return conjugate(hn::BitCast(tag, hn::Reverse(pairs, hn::BitCast(pairs, x))));
    }
    static HWY_INLINE vector product(vector x, vector y) {
        const auto straight = hn::Mul(x, hn::DupEven(y));
        const auto crossed = hn::Mul(hn::Shuffle2301(x), hn::DupOdd(y));
        return hn::OddEven(hn::Add(straight, crossed), hn::Sub(straight, crossed));
    }
};

void expand_real(const complex32f* packed, const complex32f* factors, complex32f* out, int half) {
    using v = bin_vectors;
    if (half / 2 % v::count() != 0)
        return scalar_fft_kernels.expand_real(packed, factors, out, half);
    out[0] = {packed[0].re + packed[0].im, 0.0F};
    out[half] = {packed[0].re - packed[0].im, 0.0F};
    for (int k = 1; k <= half / 2; k += v::count()) {
        const int mirrored = half - k - v::count() + 1;
        const auto value = v::load(packed + k);
        const auto mirror = v::conjugate_in_reverse(v::load(packed + mirrored));
        const auto even = times(hn::Add(value, mirror), 0.5F);
        const auto odd = v::product(hn::Sub(value, mirror), v::load(factors + k - 1));
        const auto sum = hn::Add(even, odd);
        const auto difference = hn::Sub(even, odd);
        v::store(sum, out + k);
        v::store(difference, out + half + k);
        v::store(v::conjugate_in_reverse(difference), out + mirrored);
        v::store(v::conjugate_in_reverse(sum), out + half + mirrored);
    }
}

void pack_real(const complex32f* bins, const complex32f* factors, complex32f* packed, int half) {
    using v = bin_vectors;
    if (half / 2 % v::count() != 0)
        return scalar_fft_kernels.pack_real(bins, factors, packed, half);
    packed[0] = {0.5F * (bins[0].re + bins[half].re), 0.5F * (bins[0].re - bins[half].re)};
    for (int k = 1; k <= half / 2; k += v::count()) {
        const int mirrored = half - k - v::count() + 1;
        const auto a = hn::Add(v::load(bins + k), v::conjugate_in_reverse(v::load(bins + half + mirrored)));
        const auto b = hn::Add(v::load(bins + half + k), v::conjugate_in_reverse(v::load(bins + mirrored)));
        const auto even = times(hn::Add(a, b), 0.25F);
        const auto odd = v::product(times(hn::Sub(a, b), 0.5F), v::conjugate(v::load(factors + k - 1)));
        v::store(hn::Add(even, odd), packed + k);
        v::store(v::conjugate_in_reverse(hn::Sub(even, odd)), packed + mirrored);
    }
}

} // namespace

const fft_kernels& fft_table() {
    static constexpr fft_kernels table = {transform_either_way, expand_real, pack_real};
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
