// The small transforms that passes are made of, and the last stage of real transforms, once for plain and vector
// code: the same operations in the same order, so the same bits. Included inside the namespace of a kernel file,
// once per instruction set, behind a function times(value, float) for its values; a value is a float or a vector.

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

/// Transforms x[0] to x[Radix - 1] in place.
template <int Radix>
struct butterfly;

template <>
struct butterfly<2> {
    template <class Complex>
    [[gnu::always_inline]] static inline void apply(Complex* x) {
        const Complex sum = x[0] + x[1];
        x[1] = x[0] - x[1];
        x[0] = sum;
    }
};

template <>
struct butterfly<3> {
    template <class Complex>
    [[gnu::always_inline]] static inline void apply(Complex* x) {
        const Complex sum = x[1] + x[2];
        const Complex turned = scaled(x[1] - x[2], 0.8660254037844386F); // sine of a third of the circle
        const Complex middle = x[0] - scaled(sum, 0.5F);
        x[0] = x[0] + sum;
        x[1] = minus_j(middle, turned);
        x[2] = plus_j(middle, turned);
    }
};

template <>
struct butterfly<4> {
    template <class Complex>
    [[gnu::always_inline]] static inline void apply(Complex* x) {
        const Complex even_sum = x[0] + x[2];
        const Complex even_difference = x[0] - x[2];
        const Complex odd_sum = x[1] + x[3];
        const Complex odd_difference = x[1] - x[3];
        x[0] = even_sum + odd_sum;
        x[1] = minus_j(even_difference, odd_difference);
        x[2] = even_sum - odd_sum;
        x[3] = plus_j(even_difference, odd_difference);
    }
};

template <>
struct butterfly<5> {
    // Cosines and sines of one and two fifths of the circle.
    static constexpr float cos_1 = 0.30901699437494742F;
    static constexpr float cos_2 = -0.80901699437494742F;
    static constexpr float sin_1 = 0.95105651629515357F;
    static constexpr float sin_2 = 0.58778525229247313F;

    template <class Complex>
    [[gnu::always_inline]] static inline void apply(Complex* x) {
        const Complex outer_sum = x[1] + x[4];
        const Complex inner_sum = x[2] + x[3];
        const Complex outer = x[1] - x[4];
        const Complex inner = x[2] - x[3];
        const Complex real_1 = x[0] + scaled(outer_sum, cos_1) + scaled(inner_sum, cos_2);
        const Complex real_2 = x[0] + scaled(outer_sum, cos_2) + scaled(inner_sum, cos_1);
        const Complex turned_1 = scaled(outer, sin_1) + scaled(inner, sin_2);
        const Complex turned_2 = scaled(outer, sin_2) - scaled(inner, sin_1);
        x[0] = x[0] + outer_sum + inner_sum;
        x[1] = minus_j(real_1, turned_1);
        x[2] = minus_j(real_2, turned_2);
        x[3] = plus_j(real_2, turned_2);
        x[4] = plus_j(real_1, turned_1);
    }
};

template <>
struct butterfly<8> {
    template <class Complex>
    [[gnu::always_inline]] static inline void apply(Complex* x) {
        constexpr float root_half = 0.70710678118654752F;
        Complex even[4] = {x[0] + x[4], x[1] + x[5], x[2] + x[6], x[3] + x[7]};
        const Complex d0 = x[0] - x[4];
        const Complex d1 = x[1] - x[5];
        const Complex d2 = x[2] - x[6];
        const Complex d3 = x[3] - x[7];
        // d1 and d3, turned by one and three eighths of the circle; the second with its imaginary part negated.
        const Complex eighth = scaled(Complex{d1.re + d1.im, d1.im - d1.re}, root_half);
        const Complex mirrored = scaled(Complex{d3.im - d3.re, d3.re + d3.im}, root_half);
        const Complex sum = {eighth.re + mirrored.re, eighth.im - mirrored.im};
        const Complex difference = {eighth.re - mirrored.re, eighth.im + mirrored.im};
        const Complex forward = minus_j(d0, d2);
        const Complex backward = plus_j(d0, d2);
        butterfly<4>::apply(even);
        x[0] = even[0];
        x[1] = forward + sum;
        x[2] = even[1];
        x[3] = minus_j(backward, difference);
        x[4] = even[2];
        x[5] = forward - sum;
        x[6] = even[3];
        x[7] = plus_j(backward, difference);
    }
};

/// What a half-length spectrum's value and its mirror image say about the spectrum of the real samples: value k
/// of it, and the conjugate of value half - k.
template <class Complex>
struct real_pair {
    Complex value;
    Complex conjugate_of_mirror;
};

/// `re` and `im` are the parts of -j/2 e^(-j pi k / half).
template <class Value>
[[gnu::always_inline]] inline real_pair<complex_value<Value>>
untangled(complex_value<Value> value, complex_value<Value> mirror, Value re, Value im) {
    const complex_value<Value> even =
        scaled(complex_value<Value>{value.re + mirror.re, value.im - mirror.im}, 0.5F);
    const complex_value<Value> odd =
        rotated(complex_value<Value>{value.re - mirror.re, value.im + mirror.im}, re, im);
    return {even + odd, even - odd};
}
