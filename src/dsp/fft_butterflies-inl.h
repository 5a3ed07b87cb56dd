// The small transforms that passes are made of, once for plain and vector code: the same operations in the
// same order, so the same bits. Included inside the namespace of a kernel file, once per instruction set,
// behind operators and functions of its complex values: +, -, times_j(value), and times(value, factor) by a
// real number, which is a float or what `turn` holds. A value is one complex number or a vector of them.

/// What turns a point by an angle: the cosine, or 1 - the cosine, and the sine.
template <class Factor>
struct turn {
    Factor cosine;
    Factor sine;
};

template <class Complex>
struct two_values {
    Complex first;
    Complex second;
};

/// The point (a, b) turned clockwise.
template <class Complex, class Factor>
[[gnu::always_inline]] inline two_values<Complex> turned(Complex a, Complex b, turn<Factor> by) {
    return {times(b, by.sine) + times(a, by.cosine), times(b, by.cosine) - times(a, by.sine)};
}

/// The same by 1 - the cosine. Where the angle is small all products are, and so is what rounding adds.
template <class Complex, class Factor>
[[gnu::always_inline]] inline two_values<Complex> turned_a_little(Complex a, Complex b, turn<Factor> by) {
    return {a - (times(a, by.cosine) - times(b, by.sine)), b - (times(b, by.cosine) + times(a, by.sine))};
}

/// Takes the outputs of a butterfly as it has them: some alone, others in pairs, even - j odd as output j and
/// even + j odd as output Radix - j, which an inverse transform exchanges. Hands them to store(j, value).
template <bool Inverse, int Radix, class Store>
struct straight_outputs {
    Store store;

    template <class Complex>
    [[gnu::always_inline]] inline void alone(int j, Complex value) const {
        store(j, value);
    }
    template <class Complex>
    [[gnu::always_inline]] inline void pair(int j, Complex even, Complex odd) const {
        const Complex crossed = times_j(odd);
        store(Inverse ? Radix - j : j, even - crossed);
        store(Inverse ? j : Radix - j, even + crossed);
    }
};

/// The same, turned: output j by angle(j) clockwise and Radix - j by as much back, the other way round in an
/// inverse transform.
template <bool Inverse, int Radix, class Angle, class Store>
struct turned_outputs {
    Angle angle;
    Store store;

    /// Output 0, which doesn't turn, or Radix / 2.
    template <class Complex>
    [[gnu::always_inline]] inline void alone(int j, Complex value) const {
        if (j == 0)
            return store(j, value);
        const auto by = angle(j);
        const Complex along = times(value, by.cosine);
        const Complex across = times(times_j(value), by.sine);
        store(j, Inverse ? along - across : along + across);
    }
    template <class Complex>
    [[gnu::always_inline]] inline void pair(int j, Complex even, Complex odd) const {
        const auto parts =
            turns_little(Radix, j) ? turned_a_little(odd, even, angle(j)) : turned(odd, even, angle(j));
        straight_outputs<Inverse, Radix, Store>{store}.pair(j, parts.second, parts.first);
    }
};

/// A transform of Radix values: reads them by in(k) and hands its outputs over.
template <int Radix>
struct butterfly;

template <>
struct butterfly<2> {
    template <class In, class Out>
    [[gnu::always_inline]] static inline void apply(In in, Out&& out) {
        const auto a = in(0);
        const auto b = in(1);
        out.alone(0, a + b);
        out.alone(1, a - b);
    }
};

template <>
struct butterfly<3> {
    template <class In, class Out>
    [[gnu::always_inline]] static inline void apply(In in, Out&& out) {
        const auto first = in(0);
        const auto second = in(1);
        const auto third = in(2);
        const auto sum = second + third;
        out.alone(0, first + sum);
        // Cosine and sine of a third of the circle.
        out.pair(1, first - times(sum, 0.5F), times(second - third, 0.8660254037844386F));
    }
};

template <>
struct butterfly<4> {
    template <class In, class Out>
    [[gnu::always_inline]] static inline void apply(In in, Out&& out) {
        of_values<1>(in(0), in(1), in(2), in(3), out);
    }

    /// Hands its outputs over as those `Step` apart.
    template <int Step, class Complex, class Out>
    [[gnu::always_inline]] static inline void of_values(Complex a, Complex b, Complex c, Complex d,
                                                        Out&& out) {
        const Complex even = a + c;
        const Complex odd = b + d;
        out.alone(0, even + odd);
        out.alone(2 * Step, even - odd);
        out.pair(Step, a - c, b - d);
    }
};

template <>
struct butterfly<5> {
    // Cosines and sines of one and two fifths of the circle. The first sine is near 1 and rounds badly.
    static constexpr float cos_1 = 0.30901699437494742F;
    static constexpr float cos_2 = -0.80901699437494742F;
    static constexpr float one_less_sin_1 = 0.04894348370484643F;
    static constexpr float sin_2 = 0.58778525229247313F;

    template <class In, class Out>
    [[gnu::always_inline]] static inline void apply(In in, Out&& out) {
        const auto first = in(0);
        const auto outer_sum = in(1) + in(4);
        const auto inner_sum = in(2) + in(3);
        const auto outer = in(1) - in(4);
        const auto inner = in(2) - in(3);
        out.alone(0, first + (outer_sum + inner_sum));
        out.pair(1, first + (times(outer_sum, cos_1) + times(inner_sum, cos_2)),
                 outer - (times(outer, one_less_sin_1) - times(inner, sin_2)));
        out.pair(2, first + (times(outer_sum, cos_2) + times(inner_sum, cos_1)),
                 (times(outer, sin_2) + times(inner, one_less_sin_1)) - inner);
    }
};

template <>
struct butterfly<8> {
    template <class In, class Out>
    [[gnu::always_inline]] static inline void apply(In in, Out&& out) {
        of_values<1>(in, out);
    }

    /// Hands its outputs over as those `Step` apart.
    template <int Step, class In, class Out>
    [[gnu::always_inline]] static inline void of_values(In in, Out&& out) {
        const auto a = in(0) - in(4);
        const auto b = in(1) - in(5);
        const auto c = in(2) - in(6);
        const auto d = in(3) - in(7);
        butterfly<4>::of_values<2 * Step>(in(0) + in(4), in(1) + in(5), in(2) + in(6), in(3) + in(7), out);
        const auto even = times(b - d, root_half);
        const auto odd = times(b + d, root_half);
        out.pair(Step, a + even, odd + c);
        out.pair(3 * Step, a - even, odd - c);
    }
};

// Even outputs first, then odd ones from the values read anew: sixteen registers hold half of it at a time.
template <>
struct butterfly<16> {
    template <class In, class Out>
    [[gnu::always_inline]] static inline void apply(In in, Out&& out) {
        butterfly<8>::of_values<2>(
            [=](int k) __attribute__((always_inline)) { return in(k) + in(k + 8); }, out);
        // 1 - the cosine and the sine of a sixteenth of the circle.
        constexpr turn<float> sixteenth = {0.07612046748871326F, 0.38268343236508977F};
        const auto first = in(0) - in(8);
        const auto second = in(1) - in(9);
        const auto third = in(2) - in(10);
        const auto fourth = in(3) - in(11);
        const auto fifth = in(4) - in(12);
        const auto sixth = in(5) - in(13);
        const auto seventh = in(6) - in(14);
        const auto eighth = in(7) - in(15);
        const auto even = turned_a_little(second - eighth, fourth - sixth, sixteenth);
        const auto odd = turned_a_little(fourth + sixth, second + eighth, sixteenth);
        const auto even_middle = times(third - seventh, root_half);
        const auto odd_middle = times(third + seventh, root_half);
        out.pair(1, (first + even_middle) + even.first, (odd_middle + fifth) + odd.first);
        out.pair(7, (first + even_middle) - even.first, odd.first - (odd_middle + fifth));
        out.pair(3, (first - even_middle) - even.second, (odd_middle - fifth) + odd.second);
        out.pair(5, (first - even_middle) + even.second, odd.second - (odd_middle - fifth));
    }
};

/// The parts that a butterfly of up to 5 hands over, kept instead of put together.
template <class Complex>
struct kept_parts {
    Complex sum;
    Complex even[3];
    Complex odd[3];

    [[gnu::always_inline]] inline void alone(int /*j*/, Complex value) { sum = value; }
    [[gnu::always_inline]] inline void pair(int j, Complex even_part, Complex odd_part) {
        even[j] = even_part;
        odd[j] = odd_part;
    }
};

// Three times five with no turns between (I. J. Good, "The interaction algorithm and practical Fourier
// analysis", J. R. Stat. Soc. B 20(2), 1958): of the values 5 a + 3 b it makes the outputs 10 c + 6 d, all
// modulo 15, by transforms of three from a to c and of five from b to d.
template <>
struct butterfly<15> {
    template <class In, class Out>
    [[gnu::always_inline]] static inline void apply(In in, Out&& out) {
        using complex = decltype(in(0));
        kept_parts<complex> threes[5] = {};
        for (int b = 0; b < 5; ++b)
            butterfly<3>::apply(
                [=](int a) __attribute__((always_inline)) { return in((5 * a + 3 * b) % 15); }, threes[b]);
        kept_parts<complex> sum = {};
        kept_parts<complex> even = {};
        kept_parts<complex> odd = {};
        butterfly<5>::apply(
            [&](int b) __attribute__((always_inline)) { return threes[b].sum; }, sum);
        butterfly<5>::apply(
            [&](int b) __attribute__((always_inline)) { return threes[b].even[1]; }, even);
        butterfly<5>::apply(
            [&](int b) __attribute__((always_inline)) { return threes[b].odd[1]; }, odd);
        out.alone(0, sum.sum);
        out.pair(6, sum.even[1], sum.odd[1]);
        out.pair(3, sum.even[2], times(sum.odd[2], -1.0F));
        out.pair(5, even.sum, times(odd.sum, -1.0F));
        out.pair(1, even.even[1] - odd.odd[1], even.odd[1] + odd.even[1]);
        out.pair(4, even.even[1] + odd.odd[1], odd.even[1] - even.odd[1]);
        out.pair(7, even.even[2] - odd.odd[2], even.odd[2] + odd.even[2]);
        out.pair(2, even.even[2] + odd.odd[2], even.odd[2] - odd.even[2]);
    }
};

/// Two bins from those of the even and the odd samples, or the way back: even +- the odd one, turned.
/// `quarter` is `odd` after a quarter of the circle. A steep angle is given as what it lacks to that.
template <bool Steep, class Complex, class Factor>
[[gnu::always_inline]] inline two_values<Complex> joined_halves(Complex even, Complex odd, Complex quarter,
                                                                turn<Factor> by) {
    if (Steep) {
        const Complex opposite = turned_a_little(quarter, odd, by).second;
        return {even - opposite, even + opposite};
    }
    const Complex rest = turned_a_little(odd, quarter, by).second;
    return {even + rest, even - rest};
}
