#include <cstddef>
#include <cstdint>
#include <cstring>

#include "dsp/kernel_tables.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/complex_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "dsp/vector_loops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quenlis {
namespace HWY_NAMESPACE {
#if QUENLIS_IS_PLAIN_TARGET

const complex_kernels& complex_table() {
    return scalar_complex_kernels;
}

#else
namespace hn = hwy::HWY_NAMESPACE;
namespace {

template <class V>
struct complex_vector {
    V re;
    V im;
};

HWY_INLINE const float* parts(const complex32f* a) {
    return reinterpret_cast<const float*>(a);
}

HWY_INLINE float* parts(complex32f* d) {
    return reinterpret_cast<float*>(d);
}

template <class Tag>
HWY_INLINE auto load(Tag tag, const complex32f* a) {
    complex_vector<decltype(hn::Zero(tag))> x;
    hn::LoadInterleaved2(tag, parts(a), x.re, x.im);
    return x;
}

template <class Tag, class V>
HWY_INLINE void store(Tag tag, complex_vector<V> x, complex32f* d) {
    hn::StoreInterleaved2(x.re, x.im, tag, parts(d));
}

template <class V>
HWY_INLINE V even_twice(V x) {
    return hn::DupEven(x);
}

template <class V>
HWY_INLINE V odd_twice(V x) {
    return hn::DupOdd(x);
}

// What follows does the same for wide vectors with half the shuffles and reads, of which a processor starts one
// or two at a time.

#if HWY_TARGET <= HWY_AVX2

// Duplicated by the read itself where x comes from memory; Highway's forms end as shuffles.
HWY_INLINE hn::Vec256<float> even_twice(hn::Vec256<float> x) {
    return hn::Vec256<float>{_mm256_moveldup_ps(x.raw)};
}

HWY_INLINE hn::Vec256<float> odd_twice(hn::Vec256<float> x) {
    return hn::Vec256<float>{_mm256_movehdup_ps(x.raw)};
}

#endif
#if HWY_TARGET <= HWY_AVX3

HWY_INLINE hn::Vec512<float> even_twice(hn::Vec512<float> x) {
    return hn::Vec512<float>{_mm512_moveldup_ps(x.raw)};
}

HWY_INLINE hn::Vec512<float> odd_twice(hn::Vec512<float> x) {
    return hn::Vec512<float>{_mm512_movehdup_ps(x.raw)};
}

/// Read once and kept in a register: the compiler would read again for the second use.
HWY_INLINE hn::Vec512<float> load_once(hn::Full512<float> tag, const float* a) {
    hn::Vec512<float> x = hn::LoadU(tag, a);
    asm("" : "+v"(x.raw));
    return x;
}

HWY_INLINE complex_vector<hn::Vec512<float>> load(hn::Full512<float> tag, const complex32f* a) {
    const auto first = load_once(tag, parts(a));
    const auto second = load_once(tag, parts(a) + hn::Lanes(tag));
    return {hn::ConcatEven(tag, second, first), hn::ConcatOdd(tag, second, first)};
}

HWY_INLINE void store(hn::Full512<float> tag, complex_vector<hn::Vec512<float>> x, complex32f* d) {
    const __m512i first = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const __m512i second = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    const auto pairs = [&](__m512i chosen) HWY_ATTR {
        return hn::Vec512<float>{_mm512_permutex2var_ps(x.re.raw, chosen, x.im.raw)};
    };
    hn::StoreU(pairs(first), tag, parts(d));
    hn::StoreU(pairs(second), tag, parts(d) + hn::Lanes(tag));
}

#endif

// Both parts as one number of 64 bits: taking them apart first costs more than a short block takes.
void set(complex32f* x, complex32f c, std::size_t n) {
    std::uint64_t both = 0;
    std::memcpy(&both, &c, sizeof both);
    for_each_vector<std::uint64_t, by_memory>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Repartition<float, decltype(tag)> as_parts;
        hn::StoreU(hn::BitCast(as_parts, hn::Set(tag, both)), as_parts, parts(x + i));
    });
}

void multiply(const complex32f* a, const complex32f* b, complex32f* d, std::size_t n) {
    store_each_vector<by_memory, 2>(parts(d), 2 * n, [=](auto tag, std::size_t i) HWY_ATTR {
        const auto x = hn::LoadU(tag, parts(a) + i);
        const auto y = hn::LoadU(tag, parts(b) + i);
        const auto straight = hn::Mul(x, even_twice(y));
        const auto crossed = hn::Mul(hn::Shuffle2301(x), odd_twice(y));
        return hn::OddEven(hn::Add(straight, crossed), hn::Sub(straight, crossed));
    });
}

void multiply_constant(const complex32f* a, complex32f* d, complex32f c, std::size_t n) {
    store_each_vector<by_memory, 2>(parts(d), 2 * n, [=](auto tag, std::size_t i) HWY_ATTR {
        const auto x = hn::LoadU(tag, parts(a) + i);
        const auto straight = hn::Mul(x, hn::Set(tag, c.re));
        const auto crossed =
            hn::Mul(hn::Shuffle2301(x), hn::OddEven(hn::Set(tag, c.im), hn::Set(tag, -c.im)));
        return hn::Add(straight, crossed);
    });
}

template <class Tag>
HWY_INLINE auto load_widened(Tag tag, const complex32f* a) {
    const auto x = load(hn::Rebind<float, Tag>(), a);
    return complex_vector<decltype(hn::Zero(tag))>{hn::PromoteTo(tag, x.re), hn::PromoteTo(tag, x.im)};
}

// Products of two floats are exact in double and can neither overflow nor vanish there.
void divide(const complex32f* a, const complex32f* b, complex32f* d, std::size_t n) {
    for_each_vector<double, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<float, decltype(tag)> narrow;
        const auto x = load_widened(tag, a + i);
        const auto y = load_widened(tag, b + i);
        const auto size = hn::Add(hn::Mul(x.re, x.re), hn::Mul(x.im, x.im));
        const auto scale = hn::Div(hn::Set(tag, 1.0), size);
        const auto re = hn::Mul(hn::Add(hn::Mul(y.re, x.re), hn::Mul(y.im, x.im)), scale);
        const auto im = hn::Mul(hn::Sub(hn::Mul(y.im, x.re), hn::Mul(y.re, x.im)), scale);
        hn::StoreInterleaved2(hn::DemoteTo(narrow, re), hn::DemoteTo(narrow, im), narrow, parts(d + i));
    });
}

void divide_by_constant(const complex32f* a, complex32f* d, complex32f c, std::size_t n) {
    const double re = c.re;
    const double im = c.im;
    const double scale = 1.0 / (re * re + im * im);
    for_each_vector<double, 2, 2>(2 * n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<float, decltype(tag)> narrow;
        const auto x = hn::PromoteTo(tag, hn::LoadU(narrow, parts(a) + i));
        const auto straight = hn::Mul(x, hn::Set(tag, re));
        const auto crossed = hn::Mul(hn::Shuffle01(x), hn::OddEven(hn::Set(tag, -im), hn::Set(tag, im)));
        const auto quotient = hn::Mul(hn::Add(straight, crossed), hn::Set(tag, scale));
        hn::StoreU(hn::DemoteTo(narrow, quotient), narrow, parts(d) + i);
    });
}

void join(const float* re, const float* im, complex32f* d, std::size_t n) {
    for_each_vector<float, by_memory>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        store(tag, complex_vector<decltype(hn::Zero(tag))>{hn::LoadU(tag, re + i), hn::LoadU(tag, im + i)},
              d + i);
    });
}

void split(const complex32f* a, float* re, float* im, std::size_t n) {
    for_each_vector<float, by_memory>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const auto x = load(tag, a + i);
        hn::StoreU(x.re, tag, re + i);
        hn::StoreU(x.im, tag, im + i);
    });
}

template <class Operation>
HWY_INLINE void map_to_float(const complex32f* a, float* d, std::size_t n, Operation operation) {
    store_each_vector<by_memory>(
        d, n, [=](auto tag, std::size_t i) HWY_ATTR { return operation(load(tag, a + i)); });
}

void real_part(const complex32f* a, float* d, std::size_t n) {
    map_to_float(a, d, n, [](auto x) HWY_ATTR { return x.re; });
}

void imaginary_part(const complex32f* a, float* d, std::size_t n) {
    map_to_float(a, d, n, [](auto x) HWY_ATTR { return x.im; });
}

template <class V>
HWY_INLINE V squared(V re, V im) {
    return hn::Add(hn::Mul(re, re), hn::Mul(im, im));
}

void magnitude(const complex32f* a, float* d, std::size_t n) {
    map_to_float(a, d, n, [](auto x) HWY_ATTR { return hn::Sqrt(squared(x.re, x.im)); });
}

void magnitude_of_parts(const float* re, const float* im, float* d, std::size_t n) {
    for_each_vector<float, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        hn::StoreU(hn::Sqrt(squared(hn::LoadU(tag, re + i), hn::LoadU(tag, im + i))), tag, d + i);
    });
}

void squared_magnitude(const complex32f* a, float* d, std::size_t n) {
    map_to_float(a, d, n, [](auto x) HWY_ATTR { return squared(x.re, x.im); });
}

} // namespace

const complex_kernels& complex_table() {
    static constexpr complex_kernels table = {
        set,   multiply,  multiply_constant, divide,    divide_by_constant, join,
        split, real_part, imaginary_part,    magnitude, magnitude_of_parts, squared_magnitude,
    };
    return table;
}

#endif
} // namespace HWY_NAMESPACE
} // namespace quenlis
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quenlis {
HWY_EXPORT(complex_table);

const complex_kernels& complex_kernels_of(std::int64_t target) {
    return kernels_of(HWY_DISPATCH_TABLE(complex_table), target);
}
} // namespace quenlis
#endif
