#pragma once

#include <cstddef>

#include "dsp/vector_primitives.h"

/// The inner loops over the bins of two channels, one table of them per instruction set.
struct bin_kernels {
    /// Takes out of `n` pairs of bins what they have in common: centre becomes the point of the segment
    /// between left and right that is nearest to zero, by the rule of separate_left_right_to_center for bins
    /// above 0, and is taken away from both.
    void (*separate_centre)(complex32f* left, complex32f* right, complex32f* centre, std::size_t n);
};

extern const bin_kernels scalar_bin_kernels;
extern bin_kernels active_bin_kernels __attribute__((visibility("hidden"))); ///< scalar at first
