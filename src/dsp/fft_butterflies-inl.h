// The small transforms that passes are made of, once for plain and vector code: the same operations in the
// same order, so the same bits. Included inside the namespace of a kernel file, once per instruction set,
// behind a function times(value, float) for its values; a value is a float or a vector.

template <class Value>
struct complex_value {
    Value re;
    Value im;
};

template <class Value>
[[gnu::always_inline]] inline complex_value<Value> operator+(complex_value<Value> a, complex_value<Value> b) {
    return {a.re + b.re, a.im + b.im};
}

template <class Value>
[[gnu::always_inline]] inline complex_value<Value> operator-(complex_value<Value> a, complex_value<Value> b) {
    return {a.re - b.re, a.im - b.im};
}

/// a + j b
template <class Value>
[[gnu::always_inline]] inline complex_value<Value> plus_j(complex_value<Value> a, complex_value<Value> b) {
    return {a.re - b.im, a.im + b.re};
}

/// a - j b
template <class Value>
[[gnu::always_inline]] inline complex_value<Value> minus_j(complex_value<Value> a, complex_value<Value> b) {
    return {a.re + b.im, a.im - b.re};
}

template <class Value>
[[gnu::always_inline]] inline complex_value<Value> scaled(complex_value<Value> a, float factor) {
    return {times(a.re, factor), times(a.im, factor)};
}

template <class Value>
[[gnu::always_inline]] inline complex_value<Value> rotated(complex_value<Value> a, Value re, Value im) {
    return {a.re * re - a.im * im, a.re * im + a.im * re};
}

/// A transform of Radix values: reads them by in(k), hands output j to out(j, value). Every output is made of
/// the same operations wherever it stands; values may be read more than once, after some outputs are out.
template <int Radix>
struct butterfly;

template <>
struct butterfly<2> {
    template <class In, class Out>
    [[gnu::always_inline]] static inline void apply(In in, Out out) {
        const auto a = in(0);
        const auto b = in(1);
        out(0, a + b);
        out(1, a - b);
    }
};

template <>
struct butterfly<3> {
    template <class In, class Out>
    [[gnu::always_inline]] static inline void apply(In in, Out out) {
        const auto first = in(0);
        const auto second = in(1);
        const auto third = in(2);
        const auto sum = second + third;
        const auto turned = scaled(second - third, 0.8660254037844386F); // sine of a third of the circle
        const auto middle = first - scaled(sum, 0.5F);
        out(0, first + sum);
        out(1, minus_j(middle, turned));
        out(2, plus_j(middle, turned));
    }
};

template <>
struct butterfly<4> {
    template <class In, class Out>
    [[gnu::always_inline]] static inline void apply(In in, Out out) {
        of_values(in(0), in(1), in(2), in(3), out);
    }

    template <class Complex, class Out>
    [[gnu::always_inline]] static inline void of_values(Complex a, Complex b, Complex c, Complex d, Out out) {
        const Complex even_sum = a + c;
        const Complex odd_sum = b + d;
        const Complex even_difference = a - c;
        const Complex odd_difference = b - d;
        out(0, even_sum + odd_sum);
        out(1, minus_j(even_difference, odd_difference));
        out(2, even_sum - odd_sum);
        out(3, plus_j(even_difference, odd_difference));
    }
};

template <>
struct butterfly<5> {
    // Cosines and sines of one and two fifths of the circle.
    static constexpr float cos_1 = 0.30901699437494742F;
    static constexpr float cos_2 = -0.80901699437494742F;
    static constexpr float sin_1 = 0.95105651629515357F;
    static constexpr float sin_2 = 0.58778525229247313F;

    template <class In, class Out>
    [[gnu::always_inline]] static inline void apply(In in, Out out) {
        const auto first = in(0);
        const auto outer_sum = in(1) + in(4);
        const auto inner_sum = in(2) + in(3);
        const auto outer = in(1) - in(4);
        const auto inner = in(2) - in(3);
        const auto real_1 = first + scaled(outer_sum, cos_1) + scaled(inner_sum, cos_2);
        const auto real_2 = first + scaled(outer_sum, cos_2) + scaled(inner_sum, cos_1);
        const auto turned_1 = scaled(outer, sin_1) + scaled(inner, sin_2);
        const auto turned_2 = scaled(outer, sin_2) - scaled(inner, sin_1);
        out(0, first + outer_sum + inner_sum);
        out(1, minus_j(real_1, turned_1));
        out(2, minus_j(real_2, turned_2));
        out(3, plus_j(real_2, turned_2));
        out(4, plus_j(real_1, turned_1));
    }
};

// Even outputs first, then odd ones from the inputs read anew: sixteen registers hold half of it at a time.
template <>
struct butterfly<8> {
    template <class In, class Out>
    [[gnu::always_inline]] static inline void apply(In in, Out out) {
        butterfly<4>::of_values(
            in(0) + in(4), in(1) + in(5), in(2) + in(6),
            in(3) + in(7), [&out](int j, auto value) __attribute__((always_inline)) { out(2 * j, value); });
        odd_outputs(in(0) - in(4), in(1) - in(5), in(2) - in(6), in(3) - in(7), out);
    }

    template <class Complex, class Out>
    [[gnu::always_inline]] static inline void odd_outputs(Complex a, Complex b, Complex c, Complex d,
                                                          Out out) {
        constexpr float root_half = 0.70710678118654752F;
        // b and d, turned by one and three eighths of the circle; the second with its imaginary part negated.
        const Complex eighth = scaled(Complex{b.re + b.im, b.im - b.re}, root_half);
        const Complex mirrored = scaled(Complex{d.im - d.re, d.re + d.im}, root_half);
        const Complex forward = minus_j(a, c);
        const Complex sum = {eighth.re + mirrored.re, eighth.im - mirrored.im};
        out(1, forward + sum);
        out(5, forward - sum);
        const Complex backward = plus_j(a, c);
        const Complex difference = {eighth.re - mirrored.re, eighth.im + mirrored.im};
        out(3, minus_j(backward, difference));
        out(7, plus_j(backward, difference));
    }
};
