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

template <class V>
HWY_INLINE V times(V value, V factor) {
    return hn::Mul(value, factor);
}

template <class V>
HWY_INLINE V times_j(V value) {
    const hn::DFromV<V> tag;
    return hn::Xor(hn::Shuffle2301(value), hn::OddEven(hn::Zero(tag), hn::Set(tag, -0.0F)));
}

template <class V>
HWY_INLINE V times_minus_j(V value) {
    const hn::DFromV<V> tag;
    return hn::Xor(hn::Shuffle2301(value), hn::OddEven(hn::Set(tag, -0.0F), hn::Zero(tag)));
}

#include "dsp/fft_butterflies-inl.h"

// Vectors hold complex values side by side. Those of the first pass are no longer than 4 groups.
using narrow_tag = hn::CappedTag<float, 8>;
using wide_tag = hn::ScalableTag<float>;

template <class Tag>
HWY_INLINE std::ptrdiff_t values_in(Tag tag) {
    return static_cast<std::ptrdiff_t>(hn::Lanes(tag) / 2);
}

template <class Tag>
HWY_INLINE hn::Vec<Tag> load(Tag tag, const complex32f* from) {
    return hn::LoadU(tag, reinterpret_cast<const float*>(from));
}

template <class Tag>
HWY_INLINE void store(hn::Vec<Tag> x, Tag tag, complex32f* to) {
    hn::StoreU(x, tag, reinterpret_cast<float*>(to));
}

/// Stores four of the eight outputs of each group, whose lanes are groups.
template <class Tag>
HWY_INLINE void store_groups(const hn::Vec<Tag>* x, Tag tag, complex32f* to) {
    const hn::Repartition<std::uint64_t, Tag> pairs;
    const auto lower = [=](int i) INLINE_HWY_ATTR {
        return hn::BitCast(
            tag, hn::InterleaveLower(pairs, hn::BitCast(pairs, x[i]), hn::BitCast(pairs, x[i + 1])));
    };
    const auto upper = [=](int i) INLINE_HWY_ATTR {
        return hn::BitCast(
            tag, hn::InterleaveUpper(pairs, hn::BitCast(pairs, x[i]), hn::BitCast(pairs, x[i + 1])));
    };
    if constexpr (hn::MaxLanes(Tag()) == 8) {
        store(hn::ConcatLowerLower(tag, lower(2), lower(0)), tag, to);
        store(hn::ConcatLowerLower(tag, upper(2), upper(0)), tag, to + 8);
        store(hn::ConcatUpperUpper(tag, lower(2), lower(0)), tag, to + 16);
        store(hn::ConcatUpperUpper(tag, upper(2), upper(0)), tag, to + 24);
    } else {
        store(lower(0), tag, to);
        store(lower(2), tag, to + 2);
        store(upper(0), tag, to + 8);
        store(upper(2), tag, to + 10);
    }
}

/// Groups of the pass with a run of 1 and radix 8, from `group` to before `end`: those ahead, or Behind. Its
/// lanes are groups.
template <bool Inverse, bool Behind>
HWY_INLINE void first_pass_of(std::ptrdiff_t group, std::ptrdiff_t end, std::ptrdiff_t groups,
                              const float* rotations, const complex32f* in, complex32f* to) {
    const narrow_tag tag;
    using vector = hn::Vec<narrow_tag>;
    for (; group < end; group += values_in(tag)) {
        vector x[8];
        const auto value = [=](std::ptrdiff_t k) INLINE_HWY_ATTR {
            return load(tag, in + (place_of<8>(k, Behind) * groups + group));
        };
        const auto angle = [=](std::ptrdiff_t j) INLINE_HWY_ATTR {
            const float* const factors = rotations + 2 * (group + 2 * groups * (j - 1));
            return turn<vector>{hn::LoadU(tag, factors), hn::LoadU(tag, factors + 2 * groups)};
        };
        const auto keep = [&](std::ptrdiff_t j, vector output) INLINE_HWY_ATTR { x[j] = output; };
        butterfly<8>::apply(value, turned_outputs<Inverse, 8, decltype(angle), decltype(keep)>{angle, keep});
        store_groups(x, tag, to + 8 * group);
        store_groups(x + 4, tag, to + 8 * group + 4);
    }
}

// No pass is inlined where it is called: GCC spills less when it has one at a time.
template <bool Inverse>
HWY_NOINLINE void first_pass(const fft_pass& pass, const complex32f* in, complex32f* to) {
    const std::ptrdiff_t groups = pass.groups;
    const std::ptrdiff_t ahead = pass.ahead;
    first_pass_of<Inverse, false>(0, ahead, groups, pass.rotations, in, to);
    first_pass_of<Inverse, true>(ahead, groups, groups, pass.rotations, in, to);
}

/// The butterflies of a group whose values 0 and 1 begin at `first` and `second`, the others `step` apart.
template <bool Inverse, int Radix, bool Turns>
HWY_INLINE void butterflies_of_group(std::ptrdiff_t run, std::ptrdiff_t step, const float* factors,
                                     const complex32f* first, const complex32f* second, complex32f* to) {
    const wide_tag tag;
    using vector = hn::Vec<wide_tag>;
    for (std::ptrdiff_t q = 0; q < run; q += values_in(tag)) {
        const auto value = [=](std::ptrdiff_t k) INLINE_HWY_ATTR {
            return load(tag, (k == 0 ? first : second + step * (k - 1)) + q);
        };
        const auto angle = [=](std::ptrdiff_t j) INLINE_HWY_ATTR {
            return turn<vector>{hn::Set(tag, factors[2 * j - 2]), hn::Set(tag, factors[2 * j - 1])};
        };
        const auto put = [=](std::ptrdiff_t j, vector output)
                             INLINE_HWY_ATTR { store(output, tag, to + (q + run * j)); };
        if constexpr (Turns)
            butterfly<Radix>::apply(
                value, turned_outputs<Inverse, Radix, decltype(angle), decltype(put)>{angle, put});
        else
            butterfly<Radix>::apply(value, straight_outputs<Inverse, Radix, decltype(put)>{put});
    }
}

template <bool Inverse, int Radix>
HWY_NOINLINE void middle_pass(const fft_pass& pass, const complex32f* from, complex32f* to) {
    const std::ptrdiff_t run = pass.run;
    const std::ptrdiff_t groups = pass.groups;
    const std::ptrdiff_t step = run * groups;
    const std::ptrdiff_t ahead = pass.ahead;
    const float* factors = pass.rotations;
    butterflies_of_group<Inverse, Radix, false>(run, step, factors, from, from + step, to);
    for (std::ptrdiff_t group = 1; group < groups; ++group) {
        factors += 2 * (Radix / 2);
        to += Radix * run;
        from += run;
        const bool behind = group >= ahead;
        butterflies_of_group<Inverse, Radix, true>(run, step, factors,
                                                   from + place_of<Radix>(0, behind) * step,
                                                   from + place_of<Radix>(1, behind) * step, to);
    }
}

/// The pass with one group. What it stores is finish(output).
template <bool Inverse, int Radix, class Finish>
HWY_NOINLINE void last_pass(const fft_plan& plan, const complex32f* from, complex32f* out, Finish finish) {
    const wide_tag tag;
    using vector = hn::Vec<wide_tag>;
    const std::ptrdiff_t run = plan.passes().back().run;
    const int* const order = plan.order().data();
    for (std::ptrdiff_t q = 0; q < run; q += values_in(tag)) {
        const auto value = [=](std::ptrdiff_t k) INLINE_HWY_ATTR { return load(tag, from + (q + run * k)); };
        const auto place = [=](std::ptrdiff_t j, std::ptrdiff_t first) INLINE_HWY_ATTR {
            return out + (j == 0 && first < 0 ? first + Radix * run : first + run * j);
        };
        const std::ptrdiff_t lower = order[q];
        const std::ptrdiff_t upper = order[q + values_in(tag) / 2];
        const auto put = [=](std::ptrdiff_t j, vector output) INLINE_HWY_ATTR {
            const vector finished = finish(output);
            if constexpr (hn::MaxLanes(wide_tag()) > 8) {
                const hn::Half<wide_tag> half;
                store(hn::LowerHalf(half, finished), half, place(j, lower));
                store(hn::UpperHalf(half, finished), half, place(j, upper));
            } else {
                store(finished, tag, place(j, lower));
            }
        };
        butterfly<Radix>::apply(value, straight_outputs<Inverse, Radix, decltype(put)>{put});
    }
}

template <bool Inverse, int Radix>
void last_pass(const fft_plan& plan, const complex32f* from, complex32f* out) {
    using vector = hn::Vec<wide_tag>;
    const inverse_scale scale = plan.scale();
    if constexpr (!Inverse)
        last_pass<false, Radix>(plan, from, out, [](vector output) INLINE_HWY_ATTR { return output; });
    else if (scale.rest == 0.0F)
        last_pass<true, Radix>(plan, from, out,
                               [=](vector output) INLINE_HWY_ATTR { return times(output, scale.power); });
    else
        last_pass<true, Radix>(plan, from, out, [=](vector output) INLINE_HWY_ATTR {
            return times(output, scale.power) + times(output, scale.rest);
        });
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
    case 15:
        return operation(std::integral_constant<int, 15>());
    case 16:
        return operation(std::integral_constant<int, 16>());
    default:
        return operation(std::integral_constant<int, 8>());
    }
}

// All but the first pass go to and fro between `out` and one half of the work space, to stay within the
// fastest cache.
template <bool Inverse>
void transform(const fft_plan& plan, const complex32f* in, complex32f* out, complex32f* work) {
    const auto& passes = plan.passes();
    complex32f* const halves[2] = {work, out};
    const std::size_t last = passes.size() - 1;
    complex32f* from = halves[(last + 1) % 2];
    if (last % 2 == 0 && in == out)
        from = work + plan.size();
    first_pass<Inverse>(passes.front(), in, from);
    for (std::size_t i = 1; i < last; ++i) {
        complex32f* const to = halves[(last - i + 1) % 2];
        with_radix_of(passes[i], [&](auto radix) HWY_ATTR {
            middle_pass<Inverse, decltype(radix)::value>(passes[i], from, to);
        });
        from = to;
    }
    with_radix_of(passes.back(),
                  [&](auto radix) HWY_ATTR { last_pass<Inverse, decltype(radix)::value>(plan, from, out); });
}

bool fits_vectors(const fft_plan& plan) {
    return plan.passes().size() > 1 && plan.passes()[0].radix == 8 && plan.passes()[0].groups % 4 == 0;
}

void transform_either_way(const fft_plan& plan, const complex32f* in, complex32f* out, complex32f* work,
                          bool inverse) {
    if (!fits_vectors(plan))
        scalar_fft_kernels.transform(plan, in, out, work, inverse);
    else if (inverse)
        transform<true>(plan, in, out, work);
    else
        transform<false>(plan, in, out, work);
}

template <class V>
HWY_INLINE V conjugate_in_reverse(V x) {
    const hn::DFromV<V> tag;
    const hn::Repartition<std::uint64_t, hn::DFromV<V>> pairs;
    const V reversed = hn::BitCast(tag, hn::Reverse(pairs, hn::BitCast(pairs, x)));
    return hn::Xor(reversed, hn::OddEven(hn::Set(tag, -0.0F), hn::Zero(tag)));
}

template <class Tag>
HWY_INLINE turn<hn::Vec<Tag>> load_turn(Tag tag, const complex32f* factors) {
    const auto both = load(tag, factors);
    return {hn::DupEven(both), hn::DupOdd(both)};
}

template <bool Steep>
HWY_INLINE void expand_bins(std::ptrdiff_t k, std::ptrdiff_t last, const complex32f* packed,
                            const complex32f* factors, complex32f* out, std::ptrdiff_t half) {
    const wide_tag tag;
    const std::ptrdiff_t count = values_in(tag);
    for (; k <= last; k += count) {
        const std::ptrdiff_t mirrored = half - k - count + 1;
        const auto value = load(tag, packed + k);
        const auto mirror = conjugate_in_reverse(load(tag, packed + mirrored));
        const auto odd = times(value - mirror, 0.5F);
        const auto bins = joined_halves<Steep>(times(value + mirror, 0.5F), odd, times_minus_j(odd),
                                               load_turn(tag, factors + k - 1));
        store(bins.first, tag, out + k);
        store(bins.second, tag, out + half + k);
        store(conjugate_in_reverse(bins.second), tag, out + mirrored);
        store(conjugate_in_reverse(bins.first), tag, out + half + mirrored);
    }
}

void expand_real(const complex32f* packed, const complex32f* factors, complex32f* out, int half) {
    if (half / 2 % values_in(wide_tag()) != 0)
        return scalar_fft_kernels.expand_real(packed, factors, out, half);
    out[0] = {packed[0].re + packed[0].im, 0.0F};
    out[half] = {packed[0].re - packed[0].im, 0.0F};
    const int gentle = gentle_bins(half);
    expand_bins<false>(1, gentle, packed, factors, out, half);
    expand_bins<true>(gentle + 1, half / 2, packed, factors, out, half);
}

template <bool Steep>
HWY_INLINE void pack_bins(std::ptrdiff_t k, std::ptrdiff_t last, const complex32f* bins,
                          const complex32f* factors, complex32f* packed, std::ptrdiff_t half) {
    const wide_tag tag;
    const std::ptrdiff_t count = values_in(tag);
    for (; k <= last; k += count) {
        const std::ptrdiff_t mirrored = half - k - count + 1;
        const auto a = load(tag, bins + k) + conjugate_in_reverse(load(tag, bins + half + mirrored));
        const auto b = load(tag, bins + half + k) + conjugate_in_reverse(load(tag, bins + mirrored));
        const auto odd = times(a - b, 0.25F);
        const auto values =
            joined_halves<Steep>(times(a + b, 0.25F), odd, times_j(odd), load_turn(tag, factors + k - 1));
        store(values.first, tag, packed + k);
        store(conjugate_in_reverse(values.second), tag, packed + mirrored);
    }
}

void pack_real(const complex32f* bins, const complex32f* factors, complex32f* packed, int half) {
    if (half / 2 % values_in(wide_tag()) != 0)
        return scalar_fft_kernels.pack_real(bins, factors, packed, half);
    packed[0] = {0.5F * (bins[0].re + bins[half].re), 0.5F * (bins[0].re - bins[half].re)};
    const int gentle = gentle_bins(half);
    pack_bins<false>(1, gentle, bins, factors, packed, half);
    pack_bins<true>(gentle + 1, half / 2, bins, factors, packed, half);
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
