#pragma once

#include <cstddef>

// The inner loop of the resampler, one table per instruction set, all with the same bits.

/// Taps in a row of a filter bank, and so samples in the window that a row is laid over.
constexpr std::size_t resampler_taps = 256;

struct resampler_kernels {
    /// The inner products of `windows` windows of samples, each `step` samples after the one before, with each
    /// of `rows` consecutive rows of taps: sums[w * stride + r]. Samples and taps are floats in value, so every
    /// product is exact. The taps are aligned to 64 bytes.
    void (*inner_products)(const double* samples, std::size_t step, std::size_t windows, const double* taps,
                           std::size_t rows, double* sums, std::size_t stride);
};

/// The reference, plain loops.
extern const resampler_kernels scalar_resampler_kernels;
extern resampler_kernels active_resampler_kernels __attribute__((visibility("hidden"))); ///< scalar at first
