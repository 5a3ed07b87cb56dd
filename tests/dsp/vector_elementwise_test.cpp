#include <cmath>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/vector_operations.h"
#include "dsp/vector_primitives.h"

// Every element-wise operation, on every target, with every count up to 67 and every alignment, in place and
// not, against the formula that describes it.

namespace {

using namespace vector_checks;

/// Makes operations of one element type from a function of the layer and the formula for one element.
template <class E>
struct on {
    static constexpr int width = sizeof(E) / sizeof(float);
    using two_sources = void (*)(const E*, const E*, E*, int);
    using one_source = void (*)(const E*, E*, int);
    using one_source_and_constant = void (*)(const E*, E*, E, int);
    using in_place = void (*)(E*, int);
    using constant_in_place = void (*)(E*, E, int);

    static operation two(const char* name, two_sources run, E (*formula)(E a, E b)) {
        return {
            name,
            width,
            width,
            width,
            [=](const float* a, const float* b, float* x, int n) { run(as<E>(a), as<E>(b), as<E>(x), n); },
            [=](const float* a, const float* b, float* x, int n) {
                for (int i = 0; i < n; ++i)
                    as<E>(x)[i] = formula(as<E>(a)[i], as<E>(b)[i]);
            }};
    }
    static operation two_in_place(const char* name, one_source run, E (*formula)(E a, E x)) {
        return {name,
                width,
                0,
                width,
                [=](const float* a, const float*, float* x, int n) { run(as<E>(a), as<E>(x), n); },
                [=](const float* a, const float*, float* x, int n) {
                    for (int i = 0; i < n; ++i)
                        as<E>(x)[i] = formula(as<E>(a)[i], as<E>(x)[i]);
                }};
    }
    static operation one(const char* name, one_source run, E (*formula)(E a)) {
        operation made = two_in_place(name, run, nullptr);
        made.expect = [=](const float* a, const float*, float* x, int n) {
            for (int i = 0; i < n; ++i)
                as<E>(x)[i] = formula(as<E>(a)[i]);
        };
        return made;
    }
    static operation with(const char* name, E c, one_source_and_constant run, E (*formula)(E a, E c)) {
        return {name,
                width,
                0,
                width,
                [=](const float* a, const float*, float* x, int n) { run(as<E>(a), as<E>(x), c, n); },
                [=](const float* a, const float*, float* x, int n) {
                    for (int i = 0; i < n; ++i)
                        as<E>(x)[i] = formula(as<E>(a)[i], c);
                }};
    }
    static operation one_in_place(const char* name, in_place run, E (*formula)(E x)) {
        return {name,
                0,
                0,
                width,
                [=](const float*, const float*, float* x, int n) { run(as<E>(x), n); },
                [=](const float*, const float*, float* x, int n) {
                    for (int i = 0; i < n; ++i)
                        as<E>(x)[i] = formula(as<E>(x)[i]);
                }};
    }
    static operation with_in_place(const char* name, E c, constant_in_place run, E (*formula)(E x, E c)) {
        return {name,
                0,
                0,
                width,
                [=](const float*, const float*, float* x, int n) { run(as<E>(x), c, n); },
                [=](const float*, const float*, float* x, int n) {
                    for (int i = 0; i < n; ++i)
                        as<E>(x)[i] = formula(as<E>(x)[i], c);
                }};
    }
};

complex32f sum(complex32f a, complex32f b) {
    return {a.re + b.re, a.im + b.im};
}

complex32f reverse_difference(complex32f a, complex32f b) {
    return {b.re - a.re, b.im - a.im};
}

complex32f product(complex32f a, complex32f b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

complex32f quotient(complex32f a, complex32f b) {
    const double scale = 1.0 / (double{b.re} * b.re + double{b.im} * b.im);
    const double re = double{a.re} * b.re + double{a.im} * b.im;
    const double im = double{a.im} * b.re - double{a.re} * b.im;
    return {static_cast<float>(re * scale), static_cast<float>(im * scale)};
}

complex32f reverse_quotient(complex32f a, complex32f b) {
    return quotient(b, a);
}

float ten_to_twentieth(float x) {
    return std::pow(10.0F, x / 20.0F);
}

std::vector<operation> float_operations() {
    constexpr float c = 0.37F;
    using f = on<float>;
    return {
        f::with_in_place("set", c, qnl_set, [](float, float k) { return k; }),
        f::one_in_place("zero", qnl_zero, [](float) { return 0.0F; }),
        f::one("copy", qnl_copy, [](float a) { return a; }),
        f::one("move", qnl_move, [](float a) { return a; }),
        f::two("add", qnl_add, [](float a, float b) { return a + b; }),
        f::two_in_place("add_I", qnl_add_I, [](float a, float x) { return x + a; }),
        f::with_in_place("addC_I", c, qnl_addC_I, [](float x, float k) { return x + k; }),
        f::two("subtract", qnl_subtract, [](float a, float b) { return b - a; }),
        f::two_in_place("subtract_I", qnl_subtract_I, [](float a, float x) { return x - a; }),
        f::with("subtractC", c, qnl_subtractC, [](float a, float k) { return a - k; }),
        f::with_in_place("subtractC_I", c, qnl_subtractC_I, [](float x, float k) { return x - k; }),
        f::two("multiply", qnl_multiply, [](float a, float b) { return a * b; }),
        f::two_in_place("multiply_I", qnl_multiply_I, [](float a, float x) { return x * a; }),
        f::with("multiplyC", c, qnl_multiplyC, [](float a, float k) { return a * k; }),
        f::with_in_place("multiplyC_I", c, qnl_multiplyC_I, [](float x, float k) { return x * k; }),
        f::two("divide", qnl_divide, [](float a, float b) { return b / a; }),
        f::with("divideC", c, qnl_divideC, [](float a, float k) { return a / k; }),
        f::with_in_place("divideC_I", c, qnl_divideC_I, [](float x, float k) { return x / k; }),
        f::with("divideReverseC", c, qnl_divideReverseC, [](float a, float k) { return k / a; }),
        f::one("abs", qnl_abs, [](float a) { return std::fabs(a); }),
        f::one("sqr", qnl_sqr, [](float a) { return a * a; }),
        f::one_in_place("sqr_I", qnl_sqr_I, [](float x) { return x * x; }),
        f::one_in_place("sqrt_I", qnl_sqrt_I, [](float x) { return std::sqrt(x); }),
        f::two("max_every", qnl_max_every, [](float a, float b) { return a > b ? a : b; }),
        f::two("magnitude of parts", qnl_magnitude,
               [](float a, float b) { return std::sqrt(a * a + b * b); }),
        f::with("constant_to_power", c, qnl_constant_to_power,
                [](float a, float k) { return std::pow(k, a); }),
        f::with_in_place("constant_to_power_I", c, qnl_constant_to_power_I,
                         [](float x, float k) { return std::pow(k, x); }),
        f::one("dB_to_linear", qnl_dB_to_linear, ten_to_twentieth),
        f::one_in_place("dB_to_linear_I", qnl_dB_to_linear_I, ten_to_twentieth),
        f::one_in_place("power_dB_to_linear_I", qnl_power_dB_to_linear_I,
                        [](float x) { return std::pow(10.0F, x / 10.0F); }),
    };
}

std::vector<operation> complex_operations() {
    constexpr complex32f c = {0.37F, -1.9F};
    using z = on<complex32f>;
    return {
        z::with_in_place("complex set", c, qnl_set, [](complex32f, complex32f k) { return k; }),
        z::one_in_place("complex zero", qnl_zero,
                        [](complex32f) {
                            return complex32f{0.0F, 0.0F};
                        }),
        z::one("complex move", qnl_move, [](complex32f a) { return a; }),
        z::two("complex add", qnl_add, sum),
        z::two_in_place("complex add_I", qnl_add_I, [](complex32f a, complex32f x) { return sum(x, a); }),
        z::two("complex subtract", qnl_subtract, reverse_difference),
        z::two_in_place("complex subtract_I", qnl_subtract_I, reverse_difference),
        z::two("complex multiply", qnl_multiply, product),
        z::two_in_place("complex multiply_I", qnl_multiply_I, product),
        z::with("complex multiplyC", c, qnl_multiplyC, product),
        z::with_in_place("complex multiplyC_I", c, qnl_multiplyC_I, product),
        z::two("complex divide", qnl_divide, reverse_quotient),
        z::two_in_place("complex divide_I", qnl_divide_I, reverse_quotient),
        z::with("complex divideC", c, qnl_divideC, quotient),
        z::with_in_place("complex divideC_I", c, qnl_divideC_I, quotient),
    };
}

/// From a complex operand to one float per element.
operation to_float(const char* name, void (*run)(const complex32f*, float*, int),
                   float (*formula)(complex32f)) {
    return {name,
            2,
            0,
            1,
            [=](const float* a, const float*, float* x, int n) { run(as<complex32f>(a), x, n); },
            [=](const float* a, const float*, float* x, int n) {
                for (int i = 0; i < n; ++i)
                    x[i] = formula(as<complex32f>(a)[i]);
            }};
}

std::vector<operation> mixed_operations() {
    return {
        to_float("get_real_part", qnl_get_real_part, [](complex32f a) { return a.re; }),
        to_float("get_imag_part", qnl_get_imag_part, [](complex32f a) { return a.im; }),
        to_float("magnitude", qnl_magnitude,
                 [](complex32f a) { return std::sqrt(a.re * a.re + a.im * a.im); }),
        {"real_to_complex", 1, 1, 2,
         [](const float* a, const float* b, float* x, int n) {
             qnl_real_to_complex(a, b, as<complex32f>(x), n);
         },
         [](const float* a, const float* b, float* x, int n) {
             for (int i = 0; i < n; ++i)
                 as<complex32f>(x)[i] = {a[i], b[i]};
         }},
        {"complex_to_real", 2, 0, 2,
         [](const float* a, const float*, float* x, int n) {
             qnl_complex_to_real(as<complex32f>(a), x, x == nullptr ? nullptr : x + n, n);
         },
         [](const float* a, const float*, float* x, int n) {
             for (int i = 0; i < n; ++i) {
                 x[i] = a[2 * i];
                 x[n + i] = a[2 * i + 1];
             }
         }},
        {"convert_stereo_to_mono", 0, 0, 2,
         [](const float*, const float*, float* x, int n) { convert_stereo_to_mono(x, 0.37F, n); },
         [](const float*, const float*, float* x, int n) {
             for (int i = 0; i < n; ++i)
                 x[i] = (x[i] + x[n + i]) * 0.37F;
         }},
    };
}

TEST(VectorElementwise, FloatOperationsGiveTheirFormulaOnEveryTarget) {
    sweep(float_operations(), destination::apart);
}

TEST(VectorElementwise, ComplexOperationsGiveTheirFormulaOnEveryTarget) {
    sweep(complex_operations(), destination::apart);
}

TEST(VectorElementwise, MixedOperationsGiveTheirFormulaOnEveryTarget) {
    sweep(mixed_operations(), destination::apart);
}

TEST(VectorElementwise, DestinationMayBeEitherSource) {
    for (const auto& operations : {float_operations(), complex_operations()}) {
        sweep(operations, destination::first_source);
        sweep(operations, destination::second_source);
    }
}

TEST(VectorElementwise, NullPointersAndCountsBelowOneDoNothing) {
    for (const auto& operations : {float_operations(), complex_operations(), mixed_operations()})
        for (const operation& op : operations) {
            const std::vector<float> before(8, 3.0F);
            std::vector<float> a = before;
            std::vector<float> x = before;
            op.run(a.data(), a.data(), x.data(), 0);
            op.run(a.data(), a.data(), x.data(), -3);
            op.run(a.data(), a.data(), nullptr, 2);
            if (op.a_width > 0)
                op.run(nullptr, a.data(), x.data(), 2);
            if (op.b_width > 0)
                op.run(a.data(), nullptr, x.data(), 2);
            EXPECT_EQ(x, before) << op.name;
        }
}

} // namespace
