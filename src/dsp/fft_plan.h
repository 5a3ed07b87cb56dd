#pragma once

#include <complex>
#include <vector>

#include "dsp/vector_primitives.h"

/// One pass over all values of a transform: `groups * run` butterflies of `radix` values each. Butterfly q of
/// group p takes the values q + run * (p + k * groups), k below the radix, and leaves its output j, turned
/// by the angle p * j * run / size of the circle, at q + run * (radix * p + j).
///
/// Small angles cost less rounding. So groups from `ahead` on count as p - groups, and outputs from radix / 2
/// on as j - radix: no output turns by more than about a quarter of the circle. Such a group has its values
/// one place on, the first of them at the far end, and `fft_plan::order` puts right what the outputs' numbers
/// shift.
struct fft_pass {
    int radix; ///< 2, 3, 4, 5, 8, 15 or 16
    int run;
    int groups;
    int ahead;
    /// The angles for j from 1 to radix / 2: the cosine, or 1 - the cosine where turns_little(), and the
    /// sine. In the first pass (`run` 1) for each output the cosines of all groups, each twice in turn, then
    /// the sines; in the others for each group cosine and sine of each output. Group 0 of those doesn't turn.
    /// For odd outputs of radix 8 they also make up for `root_half`.
    const float* rotations;
};

/// How many steps of `groups * run` from its first place a group has value k.
template <int Radix>
constexpr int place_of(int k, bool behind) {
    return k > 0 ? k - behind : behind * (Radix - 1);
}

/// The root of a half as it rounds. Half of the parts of radix 8's odd outputs are too small by its error.
constexpr float root_half = 0.70710678118654752F;

/// Whether output j, at most radix / 2, turns by no more than about an eighth of the circle in every group.
constexpr bool turns_little(int radix, int output) {
    return 4 * output <= radix;
}

/// The factor 1 / size of an inverse transform: a power of two, which rounds nothing, and what it lacks.
struct inverse_scale {
    float power;
    float rest; ///< 0 where the size is a power of two
};

/// How a complex transform of one length is carried out. Constant after construction.
class fft_plan {
public:
    /// @param size  from 1 up, a product of powers of 2, 3 and 5
    /// Allocates the tables.
    explicit fft_plan(int size);

    int size() const { return size_; }
    const std::vector<fft_pass>& passes() const { return passes_; }
    /// For each butterfly of the last pass the bin that its output 0 is, or that bin - size; output j is the
    /// bin `run * j` above it.
    const std::vector<int>& order() const { return order_; }
    inverse_scale scale() const { return scale_; }

private:
    int size_;
    std::vector<fft_pass> passes_;
    std::vector<int> order_;
    inverse_scale scale_;
    qnl_buffer_32f rotations_;
};

/// The values e^(j 2 pi k / size) for k from 0 to size - 1.
std::vector<std::complex<double>> unit_roots(int size);
