// Every operation that walks arrays, on every target, with every count up to 67 and every alignment, in place and
// not: against the formula that describes it or, for the project's own functions, against the scalar target.
#include "dsp/flush_to_zero.h"
#include "dsp/vector_checks.h"
#include "dsp/vector_primitives.h"

#include <functional>
#include <string>

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

template <class E>
constexpr E constant = E{0.37F};
template <>
constexpr complex32f constant<complex32f> = {0.37F, -1.9F};

/// Makes operations from elements S to elements D out of a function of the layer and the rule of one element, from
/// its operands and what the destination held; without a rule the scalar target says what to expect.
template <class S, class D = S>
struct on {
    using rule = D (*)(S a, S b, D x);

    template <class Call>
    static body walk(Call call) {
        return [=](const float* a, const float* b, float* x, int n) {
            call(reinterpret_cast<const S*>(a), reinterpret_cast<const S*>(b), reinterpret_cast<D*>(x), n);
        };
    }
    template <class Run>
    static operation made(const char* name, int sources, Run run, rule of_one) {
        constexpr int width = sizeof(S) / sizeof(float);
        const body each = walk([=](const S* a, const S* b, D* x, int n) {
            for (int i = 0; i < n; ++i)
                x[i] = of_one(sources > 0 ? a[i] : S{}, sources > 1 ? b[i] : S{}, x[i]);
        });
        return {name,
                sources > 0 ? width : 0,
                sources > 1 ? width : 0,
                sizeof(D) / sizeof(float),
                walk(run),
                of_one != nullptr ? each : on_scalar_target(walk(run))};
    }
    static operation of(const char* name, void (*run)(const S*, const S*, D*, int), rule of_one = nullptr) {
        return made(name, 2, run, of_one);
    }
    static operation of(const char* name, void (*run)(const S*, D*, int), rule of_one = nullptr) {
        const auto call = [=](const S* a, const S*, D* x, int n) { run(a, x, n); };
        return made(name, 1, call, of_one);
    }
    static operation of(const char* name, void (*run)(const S*, D*, S, int), rule of_one) {
        const auto call = [=](const S* a, const S*, D* x, int n) { run(a, x, constant<S>, n); };
        return made(name, 1, call, of_one);
    }
    static operation of(const char* name, void (*run)(D*, int), rule of_one = nullptr) {
        const auto call = [=](const S*, const S*, D* x, int n) { run(x, n); };
        return made(name, 0, call, of_one);
    }
    static operation of(const char* name, void (*run)(D*, D, int), rule of_one) {
        const auto call = [=](const S*, const S*, D* x, int n) { run(x, constant<D>, n); };
        return made(name, 0, call, of_one);
    }
};

using f = on<float>;
using z = on<complex32f>;
using parts = on<complex32f, float>;
using from_parts = on<float, complex32f>;

complex32f operator+(complex32f a, complex32f b) {
    return {a.re + b.re, a.im + b.im};
}

complex32f operator-(complex32f a, complex32f b) {
    return {a.re - b.re, a.im - b.im};
}

complex32f operator*(complex32f a, complex32f b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

complex32f operator/(complex32f a, complex32f b) {
    const double scale = 1.0 / (double{b.re} * b.re + double{b.im} * b.im);
    const double re = double{a.re} * b.re + double{a.im} * b.im;
    const double im = double{a.im} * b.re - double{a.re} * b.im;
    return {static_cast<float>(re * scale), static_cast<float>(im * scale)};
}

template <float (*Reduce)(const float*, int)>
void reduce(const float* a, float* x, int n) {
    if (a != nullptr && x != nullptr && n > 0)
        *x = Reduce(a, n);
}

/// What floats and complex values share.
template <class E>
std::vector<operation> arithmetic() {
    using e = on<E>;
    return {
        e::of("set", qnl_set, [](E, E, E) { return constant<E>; }),
        e::of("zero", qnl_zero, [](E, E, E) { return E{}; }),
        e::of("move", qnl_move, [](E a, E, E) { return a; }),
        e::of("add", qnl_add, [](E a, E b, E) { return a + b; }),
        e::of("add_I", qnl_add_I, [](E a, E, E x) { return x + a; }),
        e::of("subtract", qnl_subtract, [](E a, E b, E) { return b - a; }),
        e::of("subtract_I", qnl_subtract_I, [](E a, E, E x) { return x - a; }),
        e::of("multiply", qnl_multiply, [](E a, E b, E) { return a * b; }),
        e::of("multiply_I", qnl_multiply_I, [](E a, E, E x) { return x * a; }),
        e::of("multiplyC", qnl_multiplyC, [](E a, E, E) { return a * constant<E>; }),
        e::of("multiplyC_I", qnl_multiplyC_I, [](E, E, E x) { return x * constant<E>; }),
        e::of("divide", qnl_divide, [](E a, E b, E) { return b / a; }),
        e::of("divideC", qnl_divideC, [](E a, E, E) { return a / constant<E>; }),
        e::of("divideC_I", qnl_divideC_I, [](E, E, E x) { return x / constant<E>; }),
    };
}

std::vector<operation> operations() {
    constexpr float c = constant<float>;
    std::vector<operation> all = arithmetic<float>();
    const std::vector<operation> of_complex_values = arithmetic<complex32f>();
    all.insert(all.end(), of_complex_values.begin(), of_complex_values.end());
    const operation others[] = {
        z::of("complex divide_I", qnl_divide_I, [](complex32f a, complex32f, complex32f x) { return x / a; }),
        f::of("copy", qnl_copy, [](float a, float, float) { return a; }),
        f::of("addC_I", qnl_addC_I, [](float, float, float x) { return x + c; }),
        f::of("subtractC", qnl_subtractC, [](float a, float, float) { return a - c; }),
        f::of("subtractC_I", qnl_subtractC_I, [](float, float, float x) { return x - c; }),
        f::of("divideReverseC", qnl_divideReverseC, [](float a, float, float) { return c / a; }),
        f::of("abs", qnl_abs, [](float a, float, float) { return std::fabs(a); }),
        f::of("sqr", qnl_sqr, [](float a, float, float) { return a * a; }),
        f::of("sqr_I", qnl_sqr_I, [](float, float, float x) { return x * x; }),
        f::of("sqrt_I", qnl_sqrt_I, [](float, float, float x) { return std::sqrt(x); }),
        f::of("max_every", qnl_max_every, [](float a, float b, float) { return a > b ? a : b; }),
        f::of("magnitude", qnl_magnitude, [](float a, float b, float) { return std::sqrt(a * a + b * b); }),
        f::of("power of", qnl_constant_to_power, [](float a, float, float) { return std::pow(c, a); }),
        f::of("power of_I", qnl_constant_to_power_I, [](float, float, float x) { return std::pow(c, x); }),
        f::of("dB", qnl_dB_to_linear, [](float a, float, float) { return std::pow(10.0F, a / 20.0F); }),
        f::of("dB_I", qnl_dB_to_linear_I, [](float, float, float x) { return std::pow(10.0F, x / 20.0F); }),
        f::of("power", qnl_power_dB_to_linear_I,
              [](float, float, float x) { return std::pow(10.0F, x / 10.0F); }),

        parts::of("get_real_part", qnl_get_real_part, [](complex32f a, complex32f, float) { return a.re; }),
        parts::of("get_imag_part", qnl_get_imag_part, [](complex32f a, complex32f, float) { return a.im; }),
        parts::of("complex magnitude", qnl_magnitude,
                  [](complex32f a, complex32f, float) { return std::sqrt(a.re * a.re + a.im * a.im); }),
        from_parts::of("real_to_complex", qnl_real_to_complex,
                       [](float re, float im, complex32f) {
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
        f::of("sigmoid", qnl_sigmoid),
        f::of("tanh", qnl_tanh),
        f::of("log10", qnl_log10),
        f::of("log10_I", qnl_log10_I),
        f::of("pow", qnl_pow),
        parts::of("phase", qnl_phase),
        from_parts::of("polar_to_cart", qnl_polar_to_cart),
        f::of("hann_window_I", qnl_hann_window_I),
        parts::of("complex mag_dB", qnl_mag_dB),
        f::of("mag_dB", qnl_mag_dB),
        f::of("linear_to_dB", qnl_linear_to_dB),
        f::of("linear_to_power_dB_I", qnl_linear_to_power_dB_I),
        parts::of("power_spectrum_dB", qnl_power_spectrum_dB),
        f::of("mean", reduce<qnl_mean>),
        f::of("max", reduce<qnl_max>),
        f::of("min", reduce<qnl_min>),
    };
    all.insert(all.end(), std::begin(others), std::end(others));
    return all;
}

enum class destination { apart, first_source, second_source };

/// One operation at one count and alignment.
void check(const operation& op, destination where, int n, int offset, const char* target) {
    const auto seed = static_cast<unsigned>(3 * (16 * n + offset)); // other values for every case
    const std::vector<float> a = test_values(op.a_width * n, seed);
    const std::vector<float> b = test_values(op.b_width * n, seed + 1);
    const std::vector<float> x = test_values(op.x_width * n, seed + 2);
    const int start = wall + 11 * offset % 16;
    std::vector<float> expected = walled(start - wall, where == destination::first_source    ? a
                                                       : where == destination::second_source ? b
                                                                                             : x);
    std::vector<float> result = expected;
    const std::vector<float> a_block = behind(offset, a);
    const std::vector<float> b_block = behind(5 * offset % 16, b);
    float* const d = result.data() + start;
    op.run(where == destination::first_source ? d : a_block.data() + offset,
           where == destination::second_source ? d : b_block.data() + 5 * offset % 16, d, n);
    op.expect(a.data(), b.data(), expected.data() + start, n);
    ASSERT_TRUE(same_blocks(expected, result))
        << op.name << " on " << target << ", n " << n << ", offset " << offset << "\nexpected "
        << testing::PrintToString(expected) << "\nresult " << testing::PrintToString(result);
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

TEST(VectorOperations, GiveTheirResultOnEveryTargetAlsoWhileDenormalsAreFlushed) {
    sweep(destination::apart);
    const flush_to_zero guard;
    sweep(destination::apart);
}

TEST(VectorOperations, DestinationMayBeEitherSource) {
    sweep(destination::first_source);
    sweep(destination::second_source);
}

TEST(VectorOperations, NullPointersAndCountsBelowOneDoNothing) {
    const std::vector<float> a(8, 3.0F);
    for (const operation& op : operations()) {
        std::vector<float> x = a;
        for (const int n : {0, -3})
            op.run(a.data(), a.data(), x.data(), n);
        op.run(a.data(), a.data(), nullptr, 2);
        if (op.a_width > 0)
            op.run(nullptr, a.data(), x.data(), 2);
        if (op.b_width > 0)
            op.run(a.data(), nullptr, x.data(), 2);
        EXPECT_EQ(x, a) << op.name;
    }
}

} // namespace
