// Every operation that walks arrays, with its form in place, on every target, with every count up to 67 and a long
// one and every alignment, its destination apart or one of its sources: against the formula that describes it or, for
// the project's own functions, against the scalar target.
#include "dsp/flush_to_zero.h"
#include "dsp/vector_checks.h"
#include "dsp/vector_primitives.h"

#include <functional>

namespace {

using namespace vector_checks;

/// Operands are handed around as floats, complex ones two floats per element. `a` is the first of two sources; `b`
/// is the second one or the only one.
using body = std::function<void(const float* a, const float* b, float* d, int n)>;

/// A function of the layer. One in place finds in `d` what others read from `b`.
struct form {
    body run;
    bool in_place;
};

struct operation {
    const char* name;
    int sources;
    int source_width; ///< floats per element
    int width;        ///< of the destination
    std::vector<form> forms;
    body expect;
};

template <class E>
constexpr E constant = E{0.37F};
template <>
constexpr complex32f constant<complex32f> = {0.37F, -1.9F};

/// Makes operations from elements S to elements D out of the forms that the layer offers and the rule of one
/// element. Without a rule the first form says what to expect.
template <class S, class D = S>
struct on {
    template <class Call>
    static body walk(Call call) {
        return [=](const float* a, const float* b, float* d, int n) {
            call(reinterpret_cast<const S*>(a), reinterpret_cast<const S*>(b), reinterpret_cast<D*>(d), n);
        };
    }
    struct of_one : form {
        of_one(void (*f)(const S*, D*, int))
            : form{walk([=](const S*, const S* b, D* d, int n) { f(b, d, n); }), false} {}
        of_one(void (*f)(const S*, D*, S, int))
            : form{walk([=](const S*, const S* b, D* d, int n) { f(b, d, constant<S>, n); }), false} {}
        of_one(void (*f)(D*, int)) : form{walk([=](const S*, const S*, D* d, int n) { f(d, n); }), true} {}
        of_one(void (*f)(D*, D, int))
            : form{walk([=](const S*, const S*, D* d, int n) { f(d, constant<D>, n); }), true} {}
    };
    struct of_two : form {
        of_two(void (*f)(const S*, const S*, D*, int)) : form{walk(f), false} {}
        of_two(void (*f)(const S*, D*, int))
            : form{walk([=](const S* a, const S*, D* d, int n) { f(a, d, n); }), true} {}
    };

    static constexpr int source_width = sizeof(S) / sizeof(float);
    static constexpr int width = sizeof(D) / sizeof(float);
    static operation one(const char* name, const std::vector<of_one>& forms, D (*rule)(S) = nullptr) {
        const auto each = [=](const S*, const S* b, D* d, int n) { std::transform(b, b + n, d, rule); };
        return {name, 1, source_width, width, {forms.begin(), forms.end()}, rule ? walk(each) : forms[0].run};
    }
    static operation two(const char* name, const std::vector<of_two>& forms, D (*rule)(S, S) = nullptr) {
        const auto each = [=](const S* a, const S* b, D* d, int n) { std::transform(a, a + n, b, d, rule); };
        return {name, 2, source_width, width, {forms.begin(), forms.end()}, rule ? walk(each) : forms[0].run};
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

float magnitude_of(complex32f a) {
    return std::sqrt(a.re * a.re + a.im * a.im);
}

/// Decibels are exact multiples of the layer's own logarithm.
float log10_of(float a) {
    qnl_log10(&a, &a, 1);
    return a;
}

template <float (*Reduce)(const float*, int)>
void reduce(const float* b, float* d, int n) {
    if (b != nullptr && d != nullptr && n > 0)
        *d = Reduce(b, n);
}

/// What floats and complex values share.
template <class E>
std::vector<operation> arithmetic() {
    using e = on<E>;
    return {
        e::one("set", {qnl_set}, [](E) { return constant<E>; }),
        e::one("zero", {qnl_zero}, [](E) { return E{}; }),
        e::one("move", {qnl_move}, [](E b) { return b; }),
        e::two("add", {qnl_add, qnl_add_I}, [](E a, E b) { return a + b; }),
        e::two("subtract", {qnl_subtract, qnl_subtract_I}, [](E a, E b) { return b - a; }),
        e::two("multiply", {qnl_multiply, qnl_multiply_I}, [](E a, E b) { return a * b; }),
        e::one("multiplyC", {qnl_multiplyC, qnl_multiplyC_I}, [](E b) { return b * constant<E>; }),
        e::two("divide", {qnl_divide}, [](E a, E b) { return b / a; }),
        e::one("divideC", {qnl_divideC, qnl_divideC_I}, [](E b) { return b / constant<E>; }),
    };
}

std::vector<operation> operations() {
    constexpr float c = constant<float>;
    std::vector<operation> all = {
        z::two("complex divide", {qnl_divide_I}, [](complex32f a, complex32f b) { return b / a; }),
        f::one("copy", {qnl_copy}, [](float b) { return b; }),
        f::one("addC", {qnl_addC_I}, [](float b) { return b + c; }),
        f::one("subtractC", {qnl_subtractC, qnl_subtractC_I}, [](float b) { return b - c; }),
        f::one("divideReverseC", {qnl_divideReverseC}, [](float b) { return c / b; }),
        f::one("abs", {qnl_abs}, [](float b) { return std::fabs(b); }),
        f::one("sqr", {qnl_sqr, qnl_sqr_I}, [](float b) { return b * b; }),
        f::one("sqrt", {qnl_sqrt_I}, [](float b) { return std::sqrt(b); }),
        f::two("max_every", {qnl_max_every}, [](float a, float b) { return a > b ? a : b; }),
        f::two("magnitude", {qnl_magnitude}, [](float a, float b) { return std::sqrt(a * a + b * b); }),
        f::one("c to power", {qnl_constant_to_power, qnl_constant_to_power_I},
               [](float b) { return std::pow(c, b); }),
        f::one("dB", {qnl_dB_to_linear, qnl_dB_to_linear_I},
               [](float b) { return std::pow(10.0F, b / 20.0F); }),
        f::one("power dB", {qnl_power_dB_to_linear_I}, [](float b) { return std::pow(10.0F, b / 10.0F); }),
        f::one("mag_dB", {qnl_mag_dB}, [](float b) { return log10_of(std::fabs(b)) * 20.0F; }),
        f::one("linear_to_dB", {qnl_linear_to_dB}, [](float b) { return log10_of(b) * 20.0F; }),
        f::one("linear_to_power_dB", {qnl_linear_to_power_dB_I}, [](float b) { return log10_of(b) * 10.0F; }),
        parts::one("real part", {qnl_get_real_part}, [](complex32f b) { return b.re; }),
        parts::one("imaginary part", {qnl_get_imag_part}, [](complex32f b) { return b.im; }),
        parts::one("complex magnitude", {qnl_magnitude}, magnitude_of),
        parts::one("complex mag_dB", {qnl_mag_dB},
                   [](complex32f b) { return log10_of(magnitude_of(b)) * 20.0F; }),
        from_parts::two("real_to_complex", {qnl_real_to_complex},
                        [](float a, float b) -> complex32f {
                            return {a, b};
                        }),

        f::one("sigmoid", {qnl_sigmoid}),
        f::one("tanh", {qnl_tanh}),
        f::one("log10", {qnl_log10, qnl_log10_I}),
        f::two("pow", {qnl_pow}),
        parts::one("phase", {qnl_phase}),
        from_parts::two("polar_to_cart", {qnl_polar_to_cart}),
        f::one("hann_window", {qnl_hann_window_I}),
        parts::one("power_spectrum_dB", {qnl_power_spectrum_dB}),
        f::one("mean", {reduce<qnl_mean>}),
        f::one("max", {reduce<qnl_max>}),
        f::one("min", {reduce<qnl_min>}),
    };
    for (const auto& shared : {arithmetic<float>(), arithmetic<complex32f>()})
        all.insert(all.end(), shared.begin(), shared.end());
    return all;
}

/// Which source the destination is. Of a form in place it is the last one anyway.
enum class destination { apart, first_source, last_source };

/// One form of an operation at one count and alignment.
void check(const operation& op, const form& form, destination where, int n, int offset) {
    const bool is_a = where == destination::first_source;
    const bool is_b = where == destination::last_source || form.in_place;
    const auto seed = static_cast<unsigned>(3 * (16 * n + offset)); // other values for every case
    const std::vector<float> a = test_values(op.source_width * n, seed);
    const std::vector<float> b = is_a && is_b ? a : test_values(op.source_width * n, seed + 1);
    const std::vector<float> d = is_a ? a : is_b ? b : test_values(op.width * n, seed + 2);
    const std::vector<float> a_block = behind(offset, a);
    const std::vector<float> b_block = behind(5 * offset % 16, b);
    const int start = wall + 11 * offset % 16;
    std::vector<float> expected = walled(start - wall, d);
    std::vector<float> result = expected;
    float* const out = &result[start];
    form.run(is_a ? out : a_block.data() + offset, is_b ? out : b_block.data() + 5 * offset % 16, out, n);
    const int target = active_vector_target();
    select_vector_target(0);
    op.expect(a.data(), b.data(), &expected[start], n);
    select_vector_target(target);
    ASSERT_TRUE(same_blocks(expected, result))
        << op.name << (form.in_place ? "_I" : "") << " on " << vector_target_name(target) << ", n " << n
        << ", offset " << offset << "\nexpected " << testing::PrintToString(expected) << "\nresult "
        << testing::PrintToString(result);
}

void sweep(destination where) {
    for (const operation& op : operations())
        for (const form& form : op.forms) {
            if ((where != destination::apart && op.source_width != op.width) ||
                (where == destination::first_source && op.sources < 2))
                continue;
            for (int offset = 0; offset < 16; ++offset) {
                for (int n = 0; n <= longest_count; ++n)
                    ASSERT_NO_FATAL_FAILURE(check(op, form, where, n, offset));
                ASSERT_NO_FATAL_FAILURE(check(op, form, where, count_of_two_turns, offset));
            }
        }
}

TEST(VectorOperations, GiveTheirResultOnEveryTargetInPlaceAndWhileDenormalsAreFlushed) {
    on_every_target([](const char*) {
        for (const auto where : {destination::apart, destination::first_source, destination::last_source})
            sweep(where);
        const flush_to_zero guard;
        sweep(destination::apart);
    });
}

TEST(VectorOperations, NullPointersAndCountsBelowOneDoNothing) {
    const std::vector<float> a(8, 3.0F);
    for (const operation& op : operations())
        for (const form& form : op.forms) {
            std::vector<float> d = a;
            for (const int n : {0, -3})
                form.run(a.data(), a.data(), d.data(), n);
            form.run(a.data(), a.data(), nullptr, 2);
            if (op.sources == 2)
                form.run(nullptr, a.data(), d.data(), 2);
            if (!form.in_place)
                form.run(a.data(), nullptr, d.data(), 2);
            EXPECT_EQ(d, a) << op.name;
        }
}

} // namespace
