// Every operation that walks arrays, on every target, with every count up to 67 and every alignment, in place and
// not: against the formula that describes it or, for the project's own functions, against the scalar target.
#include <cmath>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/flush_to_zero.h"
#include "dsp/vector_checks.h"
#include "dsp/vector_primitives.h"

namespace {

using namespace vector_checks;

/// Operands are handed around as floats, complex ones two floats per element. `x` is the destination, which
/// holds values before the call that operations in place read.
using body = std::function<void(const float* a, const float* b, float* x, int n)>;

struct operation {
    std::string name;
    int a_width; ///< floats per element, 0 when the operand is not used
    int b_width;
    int x_width;
    body run;
    body expect;
};

body on_scalar_target(const body& run) {
    return [=](const float* a, const float* b, float* x, int n) {
        const int target = active_vector_target();
        select_vector_target(0);
        run(a, b, x, n);
        select_vector_target(target);
    };
}

/// Makes operations from elements S to elements D out of a function of the layer and the formula of one element;
/// without a formula the scalar target says what to expect.
template <class S, class D = S>
struct on {
    template <class Call>
    static body walk(Call call) {
        return [=](const float* a, const float* b, float* x, int n) {
            call(reinterpret_cast<const S*>(a), reinterpret_cast<const S*>(b), reinterpret_cast<D*>(x), n);
        };
    }
    template <class Run, class Formula>
    static operation made(const char* name, int sources, Run run, bool has_formula, Formula formula) {
        constexpr int width = sizeof(S) / sizeof(float);
        const body each = walk([=](const S* a, const S* b, D* x, int n) {
            for (int i = 0; i < n; ++i)
                x[i] = formula(a + i, b + i, x + i);
        });
        return {name,
                sources > 0 ? width : 0,
                sources > 1 ? width : 0,
                sizeof(D) / sizeof(float),
                walk(run),
                has_formula ? each : on_scalar_target(walk(run))};
    }
    static operation two(const char* name, void (*run)(const S*, const S*, D*, int),
                         D (*formula)(S a, S b) = nullptr) {
        return made(name, 2, run, formula != nullptr,
                    [=](const S* a, const S* b, D*) { return formula(*a, *b); });
    }
    static operation one(const char* name, void (*run)(const S*, D*, int), D (*formula)(S a) = nullptr) {
        return made(
            name, 1, [=](const S* a, const S*, D* x, int n) { run(a, x, n); }, formula != nullptr,
            [=](const S* a, const S*, D*) { return formula(*a); });
    }
    static operation onto(const char* name, void (*run)(const S*, D*, int), D (*formula)(S a, D x)) {
        return made(
            name, 1, [=](const S* a, const S*, D* x, int n) { run(a, x, n); }, true,
            [=](const S* a, const S*, D* x) { return formula(*a, *x); });
    }
    static operation with(const char* name, S c, void (*run)(const S*, D*, S, int), D (*formula)(S a, S c)) {
        return made(
            name, 1, [=](const S* a, const S*, D* x, int n) { run(a, x, c, n); }, true,
            [=](const S* a, const S*, D*) { return formula(*a, c); });
    }
    static operation here(const char* name, void (*run)(D*, int), D (*formula)(D x) = nullptr) {
        return made(
            name, 0, [=](const S*, const S*, D* x, int n) { run(x, n); }, formula != nullptr,
            [=](const S*, const S*, D* x) { return formula(*x); });
    }
    static operation here_with(const char* name, D c, void (*run)(D*, D, int), D (*formula)(D x, D c)) {
        return made(
            name, 0, [=](const S*, const S*, D* x, int n) { run(x, c, n); }, true,
            [=](const S*, const S*, D* x) { return formula(*x, c); });
    }
};

using f = on<float>;
using z = on<complex32f>;
using parts = on<complex32f, float>;

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

template <float (*Reduce)(const float*, int)>
void reduce(const float* a, float* x, int n) {
    if (a != nullptr && x != nullptr && n > 0)
        *x = Reduce(a, n);
}

std::vector<operation> operations() {
    constexpr float c = 0.37F;
    constexpr complex32f w = {0.37F, -1.9F};
    return {
        f::here_with("set", c, qnl_set, [](float, float k) { return k; }),
        f::here("zero", qnl_zero, [](float) { return 0.0F; }),
        f::one("copy", qnl_copy, [](float a) { return a; }),
        f::one("move", qnl_move, [](float a) { return a; }),
        f::two("add", qnl_add, [](float a, float b) { return a + b; }),
        f::onto("add_I", qnl_add_I, [](float a, float x) { return x + a; }),
        f::here_with("addC_I", c, qnl_addC_I, [](float x, float k) { return x + k; }),
        f::two("subtract", qnl_subtract, [](float a, float b) { return b - a; }),
        f::onto("subtract_I", qnl_subtract_I, [](float a, float x) { return x - a; }),
        f::with("subtractC", c, qnl_subtractC, [](float a, float k) { return a - k; }),
        f::here_with("subtractC_I", c, qnl_subtractC_I, [](float x, float k) { return x - k; }),
        f::two("multiply", qnl_multiply, [](float a, float b) { return a * b; }),
        f::onto("multiply_I", qnl_multiply_I, [](float a, float x) { return x * a; }),
        f::with("multiplyC", c, qnl_multiplyC, [](float a, float k) { return a * k; }),
        f::here_with("multiplyC_I", c, qnl_multiplyC_I, [](float x, float k) { return x * k; }),
        f::two("divide", qnl_divide, [](float a, float b) { return b / a; }),
        f::with("divideC", c, qnl_divideC, [](float a, float k) { return a / k; }),
        f::here_with("divideC_I", c, qnl_divideC_I, [](float x, float k) { return x / k; }),
        f::with("divideReverseC", c, qnl_divideReverseC, [](float a, float k) { return k / a; }),
        f::one("abs", qnl_abs, [](float a) { return std::fabs(a); }),
        f::one("sqr", qnl_sqr, [](float a) { return a * a; }),
        f::here("sqr_I", qnl_sqr_I, [](float x) { return x * x; }),
        f::here("sqrt_I", qnl_sqrt_I, [](float x) { return std::sqrt(x); }),
        f::two("max_every", qnl_max_every, [](float a, float b) { return a > b ? a : b; }),
        f::two("magnitude", qnl_magnitude, [](float a, float b) { return std::sqrt(a * a + b * b); }),
        f::with("power of", c, qnl_constant_to_power, [](float a, float k) { return std::pow(k, a); }),
        f::here_with("power of_I", c, qnl_constant_to_power_I,
                     [](float x, float k) { return std::pow(k, x); }),
        f::one("dB_to_linear", qnl_dB_to_linear, ten_to_twentieth),
        f::here("dB_to_linear_I", qnl_dB_to_linear_I, ten_to_twentieth),
        f::here("power_dB", qnl_power_dB_to_linear_I, [](float x) { return std::pow(10.0F, x / 10.0F); }),

        z::here_with("complex set", w, qnl_set, [](complex32f, complex32f k) { return k; }),
        z::here("complex zero", qnl_zero,
                [](complex32f) {
                    return complex32f{0.0F, 0.0F};
                }),
        z::one("complex move", qnl_move, [](complex32f a) { return a; }),
        z::two("complex add", qnl_add, sum),
        z::onto("complex add_I", qnl_add_I, [](complex32f a, complex32f x) { return sum(x, a); }),
        z::two("complex subtract", qnl_subtract, reverse_difference),
        z::onto("complex subtract_I", qnl_subtract_I, reverse_difference),
        z::two("complex multiply", qnl_multiply, product),
        z::onto("complex multiply_I", qnl_multiply_I, product),
        z::with("complex multiplyC", w, qnl_multiplyC, product),
        z::here_with("complex multiplyC_I", w, qnl_multiplyC_I, product),
        z::two("complex divide", qnl_divide, reverse_quotient),
        z::onto("complex divide_I", qnl_divide_I, reverse_quotient),
        z::with("complex divideC", w, qnl_divideC, quotient),
        z::here_with("complex divideC_I", w, qnl_divideC_I, quotient),

        parts::one("get_real_part", qnl_get_real_part, [](complex32f a) { return a.re; }),
        parts::one("get_imag_part", qnl_get_imag_part, [](complex32f a) { return a.im; }),
        parts::one("complex magnitude", qnl_magnitude,
                   [](complex32f a) { return std::sqrt(a.re * a.re + a.im * a.im); }),
        on<float, complex32f>::two("real_to_complex", qnl_real_to_complex,
                                   [](float re, float im) {
                                       return complex32f{re, im};
                                   }),
        {"complex_to_real", 2, 0, 3, // one part more than it writes: in place is not offered
         z::walk([](const complex32f* a, const complex32f*, complex32f* x, int n) {
             auto* re = reinterpret_cast<float*>(x);
             qnl_complex_to_real(a, re, re == nullptr ? nullptr : re + n, n);
         }),
         [](const float* a, const float*, float* x, int n) {
             for (int i = 0; i < 2 * n; ++i)
                 x[i / 2 + (i % 2) * n] = a[i];
         }},
        {"convert_stereo_to_mono", 0, 0, 2,
         [](const float*, const float*, float* x, int n) { convert_stereo_to_mono(x, c, n); },
         [](const float*, const float*, float* x, int n) {
             for (int i = 0; i < n; ++i)
                 x[i] = (x[i] + x[n + i]) * c;
         }},
        {"mix_to_both_sides_I", 0, 0, 3,
         [](const float*, const float*, float* x, int n) {
             if (x != nullptr)
                 qnl_mix_to_both_sides_I(x, c, x + n, x + 2 * n, n);
         },
         [](const float*, const float*, float* x, int n) {
             for (int i = 0; i < n; ++i) {
                 x[i] *= c;
                 x[n + i] += x[i];
                 x[2 * n + i] += x[i];
             }
         }},

        f::one("tanh", qnl_tanh),
        f::one("log10", qnl_log10),
        f::here("log10_I", qnl_log10_I),
        f::two("pow", qnl_pow),
        parts::one("phase", qnl_phase),
        on<float, complex32f>::two("polar_to_cart", qnl_polar_to_cart),
        f::here("hann_window_I", qnl_hann_window_I),
        parts::one("complex mag_dB", qnl_mag_dB),
        f::one("mag_dB", qnl_mag_dB),
        f::one("linear_to_dB", qnl_linear_to_dB),
        f::here("linear_to_power_dB_I", qnl_linear_to_power_dB_I),
        parts::one("power_spectrum_dB", qnl_power_spectrum_dB),
        f::one("mean", reduce<qnl_mean>),
        f::one("max", reduce<qnl_max>),
        f::one("min", reduce<qnl_min>),
    };
}

enum class destination { apart, first_source, second_source };

/// One operation at one count and alignment.
void check(const operation& op, destination where, int n, int offset, const char* target) {
    const auto seed = static_cast<unsigned>(3 * (16 * n + offset)); // other values for every case
    const std::vector<float> a = test_values(op.a_width * n, seed);
    const std::vector<float> b = test_values(op.b_width * n, seed + 1);
    std::vector<float> x = test_values(op.x_width * n, seed + 2);
    if (where != destination::apart)
        x = where == destination::first_source ? a : b;
    const std::vector<float> a_block = behind(offset, a);
    const std::vector<float> b_block = behind(5 * offset % 16, b);
    guarded_block<float> result(x.data(), op.x_width * n, 11 * offset % 16);
    op.run(where == destination::first_source ? result.data() : a_block.data() + offset,
           where == destination::second_source ? result.data() : b_block.data() + 5 * offset % 16,
           result.data(), n);
    op.expect(a.data(), b.data(), x.data(), n);
    const int index = first_difference(x.data(), result.data(), op.x_width * n);
    ASSERT_TRUE(index == -1 && result.walls_stand())
        << op.name << " on " << target << ", n " << n << ", offset " << offset << ", index " << index
        << " of " << testing::PrintToString(x);
}

void sweep(destination where) {
    on_every_target([&](const char* target) {
        for (const operation& op : operations()) {
            if ((where == destination::first_source && op.a_width != op.x_width) ||
                (where == destination::second_source && op.b_width != op.x_width))
                continue;
            for (int n = 0; n <= longest_count; ++n)
                for (int offset = 0; offset < 16; ++offset) {
                    check(op, where, n, offset, target);
                    if (testing::Test::HasFatalFailure())
                        return;
                }
        }
    });
}

TEST(VectorOperations, GiveTheirResultOnEveryTarget) {
    sweep(destination::apart);
}

TEST(VectorOperations, GiveTheirResultWhileDenormalsAreFlushed) {
    const flush_to_zero guard;
    sweep(destination::apart);
}

TEST(VectorOperations, DestinationMayBeEitherSource) {
    sweep(destination::first_source);
    sweep(destination::second_source);
}

TEST(VectorOperations, NullPointersAndCountsBelowOneDoNothing) {
    for (const operation& op : operations()) {
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
