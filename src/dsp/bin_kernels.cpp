#include "dsp/bin_kernels.h"

#include <cstddef>
#include <limits>

#include "dsp/kernel_tables.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/bin_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "dsp/vector_loops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quenlis {
namespace HWY_NAMESPACE {
#if QUENLIS_IS_PLAIN_TARGET

const bin_kernels& bin_table() {
    return scalar_bin_kernels;
}

#else
namespace hn = hwy::HWY_NAMESPACE;
namespace {

template <class V>
struct bins {
    V re;
    V im;
};

template <class Tag>
HWY_INLINE bins<hn::Vec<Tag>> load(Tag tag, const complex32f* a) {
    bins<hn::Vec<Tag>> x;
    hn::LoadInterleaved2(tag, reinterpret_cast<const float*>(a), x.re, x.im);
    return x;
}

template <class Tag>
HWY_INLINE void store(bins<hn::Vec<Tag>> x, Tag tag, complex32f* d) {
    hn::StoreInterleaved2(x.re, x.im, tag, reinterpret_cast<float*>(d));
}

template <class M, class V>
HWY_INLINE bins<V> select(M mask, bins<V> yes, bins<V> no) {
    return {hn::IfThenElse(mask, yes.re, no.re), hn::IfThenElse(mask, yes.im, no.im)};
}

template <class V>
HWY_INLINE V magnitude(bins<V> x) {
    return hn::Sqrt(hn::Add(hn::Mul(x.re, x.re), hn::Mul(x.im, x.im)));
}

template <class Tag, class V>
HWY_INLINE hn::Mask<Tag> is_finite(Tag tag, V x) {
    return hn::Le(hn::Abs(x), hn::Set(tag, std::numeric_limits<float>::max()));
}

/// Every case is worked out for every bin, and the last selection that holds wins.
template <class Tag, class V = hn::Vec<Tag>>
HWY_INLINE bins<V> common_part(Tag tag, bins<V> left, bins<V> right) {
    const V zero = hn::Zero(tag);
    const V dr = hn::Sub(left.re, right.re);
    const V di = hn::Sub(left.im, right.im);
    const V slope = hn::Div(di, dr);
    const V inverse_slope = hn::Div(hn::Set(tag, 1.0F), slope);
    const V x = hn::Div(hn::Neg(hn::Sub(left.im, hn::Mul(slope, left.re))), hn::Add(slope, inverse_slope));
    const V y = hn::Mul(hn::Neg(inverse_slope), x);
    const auto rising = hn::Lt(left.re, right.re);
    const auto inside = hn::And(hn::Ge(x, hn::IfThenElse(rising, left.re, right.re)),
                                hn::Le(x, hn::IfThenElse(rising, right.re, left.re)));
    const auto foot_counts = hn::And(inside, hn::And(is_finite(tag, x), is_finite(tag, y)));
    const auto no_dr = hn::Eq(dr, zero);
    const auto no_di = hn::Eq(di, zero);

    bins<V> common = select(hn::Gt(magnitude(right), magnitude(left)), left, right);
    common = select(foot_counts, {x, y}, common);
    common = select(no_di, {zero, smaller_of(left.im, right.im)}, common);
    common = select(no_dr, {smaller_of(left.re, right.re), zero}, common);
    return select(hn::And(no_dr, no_di), left, common);
}

void separate_centre(complex32f* left, complex32f* right, complex32f* centre, std::size_t n) {
    for_each_vector<float, 1>(n, [=](auto tag, std::size_t k) HWY_ATTR {
        const auto l = load(tag, left + k);
        const auto r = load(tag, right + k);
        const auto common = common_part(tag, l, r);
        using pair = decltype(common);
        store(common, tag, centre + k);
        store(pair{hn::Sub(l.re, common.re), hn::Sub(l.im, common.im)}, tag, left + k);
        store(pair{hn::Sub(r.re, common.re), hn::Sub(r.im, common.im)}, tag, right + k);
    });
}

} // namespace

const bin_kernels& bin_table() {
    static constexpr bin_kernels table = {separate_centre};
    return table;
}

#endif
} // namespace HWY_NAMESPACE
} // namespace quenlis
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quenlis {
HWY_EXPORT(bin_table);

const bin_kernels& bin_kernels_of(std::int64_t target) {
    return kernels_of(HWY_DISPATCH_TABLE(bin_table), target);
}
} // namespace quenlis
#endif
