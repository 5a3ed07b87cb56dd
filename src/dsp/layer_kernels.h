#pragma once

#include <cstddef>
#include <cstdint>

// The inner loops of products, see products.h.

/// Some rows of a matrix, what they are multiplied by, and what they are added to.
template <class Weight>
struct weighted_rows {
    const Weight* weights;
    std::ptrdiff_t row_stride;
    const std::int32_t* rows; ///< which of them, in order
    std::size_t count;
    const float* in; ///< the factor of row r and frame f at in[f * in_stride + r]
    std::ptrdiff_t in_stride;
    std::size_t frames; ///< 1, 2 or 4
    float* out;         ///< `width` sums of frame f at out + f * out_stride
    std::ptrdiff_t out_stride;
    std::size_t width;
};

constexpr float tanh_table_end = 8.0F;

struct layer_kernels {
    /// Add the weighted rows to the sums, row after row.
    void (*add_float_rows)(const weighted_rows<float>& walk);
    void (*add_byte_rows)(const weighted_rows<std::int8_t>& walk);
    float (*inner_product)(const float* a, const float* b, std::size_t n);
    void (*table_tanh)(const float* table, float* x, std::size_t n);
};

extern const layer_kernels scalar_layer_kernels;
extern layer_kernels active_layer_kernels __attribute__((visibility("hidden"))); ///< scalar at first
