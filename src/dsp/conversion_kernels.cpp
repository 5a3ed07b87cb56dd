#include <cstddef>
#include <cstdint>

#include "dsp/conversion_factors.h"
#include "dsp/kernel_tables.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/conversion_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "dsp/vector_loops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quenlis {
namespace HWY_NAMESPACE {
#if QUENLIS_IS_PLAIN_TARGET

const conversion_kernels& conversion_table() {
    return scalar_conversion_kernels;
}

#else
namespace hn = hwy::HWY_NAMESPACE;
namespace {

/// Held to the range of a short, as floats; NaN becomes 0.
template <class Tag, class V>
HWY_INLINE V short_scale(Tag tag, V x) {
    const V scaled = hn::Mul(x, hn::Set(tag, to_short_scale));
    const V limited = larger_of(hn::Set(tag, lowest_short), smaller_of(hn::Set(tag, highest_short), scaled));
    return hn::IfThenElseZero(hn::Eq(limited, limited), limited);
}

template <class Tag, class V>
HWY_INLINE auto truncated(Tag tag, V x) {
    return hn::ConvertTo(hn::Rebind<std::int32_t, Tag>(), short_scale(tag, x));
}

template <class Tag, class V>
HWY_INLINE auto rounded(Tag tag, V x) {
    const V shift = hn::Set(tag, rounding_shift);
    return hn::ConvertTo(hn::Rebind<std::int32_t, Tag>(),
                         hn::Sub(hn::Add(short_scale(tag, x), shift), shift));
}

/// A frame of two shorts, seen as one 32-bit number, has the left one in its lower half.
void deinterleave_short(const short* a, float* left, float* right, std::size_t n) {
    for_each_vector<float, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<std::int32_t, decltype(tag)> frame_tag;
        const hn::Repartition<std::int16_t, decltype(frame_tag)> short_tag;
        const auto frames = hn::BitCast(frame_tag, hn::LoadU(short_tag, a + 2 * i));
        const auto left_shorts = hn::ShiftRight<16>(hn::ShiftLeft<16>(frames));
        const auto factor = hn::Set(tag, from_short_stereo);
        hn::StoreU(hn::Mul(hn::ConvertTo(tag, left_shorts), factor), tag, left + i);
        hn::StoreU(hn::Mul(hn::ConvertTo(tag, hn::ShiftRight<16>(frames)), factor), tag, right + i);
    });
}

void interleave_short(const float* left, const float* right, short* d, std::size_t n) {
    for_each_vector<float, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<std::int32_t, decltype(tag)> frame_tag;
        const hn::Repartition<std::int16_t, decltype(frame_tag)> short_tag;
        const auto lower = hn::And(truncated(tag, hn::LoadU(tag, left + i)), hn::Set(frame_tag, 0xFFFF));
        const auto upper = hn::ShiftLeft<16>(truncated(tag, hn::LoadU(tag, right + i)));
        hn::StoreU(hn::BitCast(short_tag, hn::Or(lower, upper)), short_tag, d + 2 * i);
    });
}

void deinterleave_double(const double* a, float* left, float* right, std::size_t n) {
    for_each_vector<double, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<float, decltype(tag)> narrow;
        auto left_values = hn::Zero(tag);
        auto right_values = hn::Zero(tag);
        hn::LoadInterleaved2(tag, a + 2 * i, left_values, right_values);
        hn::StoreU(hn::DemoteTo(narrow, left_values), narrow, left + i);
        hn::StoreU(hn::DemoteTo(narrow, right_values), narrow, right + i);
    });
}

void interleave_double(const float* left, const float* right, double* d, std::size_t n) {
    for_each_vector<double, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<float, decltype(tag)> narrow;
        const auto left_values = hn::PromoteTo(tag, hn::LoadU(narrow, left + i));
        const auto right_values = hn::PromoteTo(tag, hn::LoadU(narrow, right + i));
        hn::StoreInterleaved2(left_values, right_values, tag, d + 2 * i);
    });
}

void short_to_float(const short* a, float* d, std::size_t n) {
    for_each_vector<float, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<std::int16_t, decltype(tag)> short_tag;
        const hn::Rebind<std::int32_t, decltype(tag)> wide_tag;
        const auto wide = hn::PromoteTo(wide_tag, hn::LoadU(short_tag, a + i));
        hn::StoreU(hn::Mul(hn::ConvertTo(tag, wide), hn::Set(tag, from_short_exact)), tag, d + i);
    });
}

void float_to_short(const float* a, short* d, std::size_t n) {
    for_each_vector<float, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<std::int16_t, decltype(tag)> short_tag;
        hn::StoreU(hn::DemoteTo(short_tag, rounded(tag, hn::LoadU(tag, a + i))), short_tag, d + i);
    });
}

void float_to_double(const float* a, double* d, std::size_t n) {
    for_each_vector<double, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<float, decltype(tag)> narrow;
        hn::StoreU(hn::PromoteTo(tag, hn::LoadU(narrow, a + i)), tag, d + i);
    });
}

void double_to_float(const double* a, float* d, std::size_t n) {
    for_each_vector<double, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<float, decltype(tag)> narrow;
        hn::StoreU(hn::DemoteTo(narrow, hn::LoadU(tag, a + i)), narrow, d + i);
    });
}

} // namespace

const conversion_kernels& conversion_table() {
    static constexpr conversion_kernels table = {
        deinterleave_short, deinterleave_double, interleave_short, interleave_double,
        short_to_float,     float_to_short,      float_to_double,  double_to_float,
    };
    return table;
}

#endif
} // namespace HWY_NAMESPACE
} // namespace quenlis
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quenlis {
HWY_EXPORT(conversion_table);

const conversion_kernels& conversion_kernels_of(std::int64_t target) {
    return kernels_of(HWY_DISPATCH_TABLE(conversion_table), target);
}
} // namespace quenlis
#endif
