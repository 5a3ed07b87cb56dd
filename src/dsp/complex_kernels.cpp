#include <cstddef>

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

void set(complex32f* x, complex32f c, std::size_t n) {
    for_each_vector<float, 4>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        hn::StoreInterleaved2(hn::Set(tag, c.re), hn::Set(tag, c.im), tag, parts(x + i));
    });
}

template <class V>
HWY_INLINE complex_vector<V> product(complex_vector<V> a, complex_vector<V> b) {
    return {hn::Sub(hn::Mul(a.re, b.re), hn::Mul(a.im, b.im)),
            hn::Add(hn::Mul(a.re, b.im), hn::Mul(a.im, b.re))};
}

void multiply(const complex32f* a, const complex32f* b, complex32f* d, std::size_t n) {
    for_each_vector<float, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        store(tag, product(load(tag, a + i), load(tag, b + i)), d + i);
    });
}

void multiply_constant(const complex32f* a, complex32f* d, complex32f c, std::size_t n) {
    for_each_vector<float, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const complex_vector<decltype(hn::Zero(tag))> factor = {hn::Set(tag, c.re), hn::Set(tag, c.im)};
        store(tag, product(load(tag, a + i), factor), d + i);
    });
}

// Products of two floats are exact in double and can neither overflow nor vanish there.
template <class V>
HWY_INLINE complex_vector<V> scaled_quotient(complex_vector<V> dividend, complex_vector<V> divisor, V scale) {
    const V re = hn::Add(hn::Mul(dividend.re, divisor.re), hn::Mul(dividend.im, divisor.im));
    const V im = hn::Sub(hn::Mul(dividend.im, divisor.re), hn::Mul(dividend.re, divisor.im));
    return {hn::Mul(re, scale), hn::Mul(im, scale)};
}

template <class Tag>
HWY_INLINE auto load_widened(Tag tag, const complex32f* a) {
    const auto x = load(hn::Rebind<float, Tag>(), a);
    return complex_vector<decltype(hn::Zero(tag))>{hn::PromoteTo(tag, x.re), hn::PromoteTo(tag, x.im)};
}

template <class Tag, class V>
HWY_INLINE void store_narrowed(Tag, complex_vector<V> x, complex32f* d) {
    const hn::Rebind<float, Tag> narrow;
    hn::StoreInterleaved2(hn::DemoteTo(narrow, x.re), hn::DemoteTo(narrow, x.im), narrow, parts(d));
}

void divide(const complex32f* a, const complex32f* b, complex32f* d, std::size_t n) {
    for_each_vector<double, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const auto divisor = load_widened(tag, a + i);
        const auto size = hn::Add(hn::Mul(divisor.re, divisor.re), hn::Mul(divisor.im, divisor.im));
        const auto scale = hn::Div(hn::Set(tag, 1.0), size);
        store_narrowed(tag, scaled_quotient(load_widened(tag, b + i), divisor, scale), d + i);
    });
}

void divide_by_constant(const complex32f* a, complex32f* d, complex32f c, std::size_t n) {
    const double re = c.re;
    const double im = c.im;
    const double scale = 1.0 / (re * re + im * im);
    for_each_vector<double, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const complex_vector<decltype(hn::Zero(tag))> divisor = {hn::Set(tag, re), hn::Set(tag, im)};
        store_narrowed(tag, scaled_quotient(load_widened(tag, a + i), divisor, hn::Set(tag, scale)), d + i);
    });
}

void join(const float* re, const float* im, complex32f* d, std::size_t n) {
    for_each_vector<float, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        hn::StoreInterleaved2(hn::LoadU(tag, re + i), hn::LoadU(tag, im + i), tag, parts(d + i));
    });
}

void split(const complex32f* a, float* re, float* im, std::size_t n) {
    for_each_vector<float, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const auto x = load(tag, a + i);
        hn::StoreU(x.re, tag, re + i);
        hn::StoreU(x.im, tag, im + i);
    });
}

template <class Operation>
HWY_INLINE void map_to_float(const complex32f* a, float* d, std::size_t n, Operation operation) {
    for_each_vector<float, 2>(n, [=](auto tag, std::size_t i)
                                     HWY_ATTR { hn::StoreU(operation(load(tag, a + i)), tag, d + i); });
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
