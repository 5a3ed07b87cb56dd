#pragma once

#include <vector>

#include "dsp/vector_primitives.h"

/// One pass over all values of a transform: `groups * run` butterflies of `radix` values each. Butterfly q of
/// group p takes the values q + run * (p + k * groups), k below the radix, and leaves its output j, rotated,
/// at q + run * (radix * p + j): after the last pass everything stands in natural order.
struct fft_pass {
    int radix; ///< 2, 3, 4, 5 or 8
    int run;
    int groups;
    /// The factors of the outputs from 1 on. In the first pass (`run` 1): for each output its real parts, one
    /// per group, then its imaginary parts. In the others: for each group real and imaginary part of each
    /// output's factor. Group 0 of those needs none and is not rotated.
    const float* rotations;
};

/// How a complex transform of one length is carried out. Constant after construction.
class fft_plan {
public:
    /// @param size  from 1 up, a product of powers of 2, 3 and 5
    /// Allocates the tables.
    explicit fft_plan(int size);

    int size() const { return size_; }
    const std::vector<fft_pass>& passes() const { return passes_; }

private:
    int size_;
    std::vector<fft_pass> passes_;
    qnl_buffer_32f rotations_;
};

/// Where the first pass has the factors of a group among those of all groups. Eight groups come in the order
/// 0 4 1 5 2 6 3 7, in which the vector kernels get them most cheaply, when their number is a multiple of 8.
int place_of_group(const fft_pass& pass, int group);

/// The values e^(-j 2 pi k / size) for k from 0 to size - 1, each correct to its last bit or nearly so.
std::vector<complex32f> unit_roots(int size);
