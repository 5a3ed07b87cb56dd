#include <cstddef>
#include <limits>

#include "dsp/kernel_tables.h"
#include "dsp/reduction_order.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/arithmetic_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "dsp/vector_loops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quenlis {
namespace HWY_NAMESPACE {
#if QUENLIS_IS_PLAIN_TARGET

const arithmetic_kernels& arithmetic_table() {
    return scalar_arithmetic_kernels;
}

#else
namespace hn = hwy::HWY_NAMESPACE;
namespace {

// Vectors in a turn of a loop of divisions or roots, whose unit is busiest when they come one by one.
constexpr std::size_t by_divider = 1;

template <std::size_t Unrolled = by_memory, class Operation>
HWY_INLINE void map(const float* a, float* d, std::size_t n, Operation operation) {
    store_each_vector<Unrolled>(
        d, n, [=](auto tag, std::size_t i) HWY_ATTR { return operation(tag, hn::LoadU(tag, a + i)); });
}

template <std::size_t Unrolled = by_memory, class Operation>
HWY_INLINE void map(const float* a, const float* b, float* d, std::size_t n, Operation operation) {
    store_each_vector<Unrolled>(d, n, [=](auto tag, std::size_t i) HWY_ATTR {
        return operation(tag, hn::LoadU(tag, a + i), hn::LoadU(tag, b + i));
    });
}

void set(float* x, float c, std::size_t n) {
    for_each_vector<float, by_memory>(n, [=](auto tag, std::size_t i)
                                             HWY_ATTR { hn::StoreU(hn::Set(tag, c), tag, x + i); });
}

void add(const float* a, const float* b, float* d, std::size_t n) {
    map(a, b, d, n, [](auto, auto x, auto y) HWY_ATTR { return hn::Add(x, y); });
}

void add_constant(const float* a, float* d, float c, std::size_t n) {
    map(a, d, n, [=](auto tag, auto x) HWY_ATTR { return hn::Add(x, hn::Set(tag, c)); });
}

void subtract(const float* a, const float* b, float* d, std::size_t n) {
    map(a, b, d, n, [](auto, auto x, auto y) HWY_ATTR { return hn::Sub(y, x); });
}

void multiply(const float* a, const float* b, float* d, std::size_t n) {
    map(a, b, d, n, [](auto, auto x, auto y) HWY_ATTR { return hn::Mul(x, y); });
}

void multiply_constant(const float* a, float* d, float c, std::size_t n) {
    map(a, d, n, [=](auto tag, auto x) HWY_ATTR { return hn::Mul(x, hn::Set(tag, c)); });
}

void divide(const float* a, const float* b, float* d, std::size_t n) {
    map<by_divider>(a, b, d, n, [](auto, auto x, auto y) HWY_ATTR { return hn::Div(y, x); });
}

void divide_by_constant(const float* a, float* d, float c, std::size_t n) {
    map<by_divider>(a, d, n, [=](auto tag, auto x) HWY_ATTR { return hn::Div(x, hn::Set(tag, c)); });
}

void divide_constant(const float* a, float* d, float c, std::size_t n) {
    map<by_divider>(a, d, n, [=](auto tag, auto x) HWY_ATTR { return hn::Div(hn::Set(tag, c), x); });
}

void absolute(const float* a, float* d, std::size_t n) {
    map(a, d, n, [](auto, auto x) HWY_ATTR { return hn::Abs(x); });
}

void square(const float* a, float* d, std::size_t n) {
    map(a, d, n, [](auto, auto x) HWY_ATTR { return hn::Mul(x, x); });
}

void square_root(const float* a, float* d, std::size_t n) {
    map<by_divider>(a, d, n, [](auto, auto x) HWY_ATTR { return hn::Sqrt(x); });
}

void larger(const float* a, const float* b, float* d, std::size_t n) {
    map(a, b, d, n, [](auto, auto x, auto y) HWY_ATTR { return larger_of(x, y); });
}

void add_and_scale(const float* a, const float* b, float* d, float c, std::size_t n) {
    map(a, b, d, n,
        [=](auto tag, auto x, auto y) HWY_ATTR { return hn::Mul(hn::Add(x, y), hn::Set(tag, c)); });
}

void scale_and_add_twice(float* x, float c, float* first, float* second, std::size_t n) {
    for_each_vector<float, 4>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const auto scaled = hn::Mul(hn::LoadU(tag, x + i), hn::Set(tag, c));
        hn::StoreU(scaled, tag, x + i);
        hn::StoreU(hn::Add(hn::LoadU(tag, first + i), scaled), tag, first + i);
        hn::StoreU(hn::Add(hn::LoadU(tag, second + i), scaled), tag, second + i);
    });
}

/// `combine` does to vectors what `combine_floats` does to floats.
template <class Combine>
HWY_INLINE float reduce(const float* a, std::size_t n, float start, Combine combine,
                        float (*combine_floats)(float, float)) {
    const hn::CappedTag<float, reduction_lanes / 2> tag;
    constexpr std::size_t vectors = reduction_lanes / hn::MaxLanes(tag);
    decltype(hn::Zero(tag)) partial[vectors];
    for (auto& lane : partial)
        lane = hn::Set(tag, start);
    std::size_t i = 0;
    for (; n - i >= reduction_lanes; i += reduction_lanes)
        for (std::size_t k = 0; k < vectors; ++k)
            partial[k] = combine(hn::LoadU(tag, a + i + k * hn::Lanes(tag)), partial[k]);
    float lanes[reduction_lanes];
    for (std::size_t k = 0; k < vectors; ++k)
        hn::StoreU(partial[k], tag, lanes + k * hn::Lanes(tag));
    return combine_lanes(lanes, a + i, n - i, combine_floats);
}

float sum(const float* a, std::size_t n) {
    return reduce(
        a, n, 0.0F, [](auto x, auto lane) HWY_ATTR { return hn::Add(x, lane); }, added);
}

float largest(const float* a, std::size_t n) {
    return reduce(
        a, n, -std::numeric_limits<float>::infinity(),
        [](auto x, auto lane) HWY_ATTR { return larger_of(x, lane); }, larger_one);
}

float smallest(const float* a, std::size_t n) {
    return reduce(
        a, n, std::numeric_limits<float>::infinity(),
        [](auto x, auto lane) HWY_ATTR { return smaller_of(x, lane); }, smaller_one);
}

} // namespace

const arithmetic_kernels& arithmetic_table() {
    static constexpr arithmetic_kernels table = {
        set,
        add,
        add_constant,
        subtract,
        multiply,
        multiply_constant,
        divide,
        divide_by_constant,
        divide_constant,
        absolute,
        square,
        square_root,
        larger,
        add_and_scale,
        scale_and_add_twice,
        sum,
        largest,
        smallest,
    };
    return table;
}

#endif
} // namespace HWY_NAMESPACE
} // namespace quenlis
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quenlis {
HWY_EXPORT(arithmetic_table);

const arithmetic_kernels& arithmetic_kernels_of(std::int64_t target) {
    return kernels_of(HWY_DISPATCH_TABLE(arithmetic_table), target);
}
} // namespace quenlis
#endif
