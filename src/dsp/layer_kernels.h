#pragma once

#include <cstddef>
#include <cstdint>

// The inner loops of products, see products.h.

/// Frames whose products can be added in one go.
constexpr std::size_t max_walked_frames = 4;

/// What some rows of weights are added to: for each frame `width` sums, from out + frame * out_stride on.
struct weighted_rows {
    const float* inputs; ///< for each row, the factor of each frame
    std::size_t frames;  ///< 1, 2 or 4
    float* out;
    std::ptrdiff_t out_stride;
    std::size_t width;
};

struct layer_kernels {
    /// Adds `count` weighted rows to the sums, row after row.
    void (*add_float_rows)(const float* const* rows, std::size_t count, const weighted_rows& sums);
    void (*add_byte_rows)(const std::int8_t* const* rows, std::size_t count, const weighted_rows& sums);
    float (*inner_product)(const float* a, const float* b, std::size_t n);
};

extern const layer_kernels scalar_layer_kernels;
