#pragma once

#include <cstdint>

// What network layers and correlations are made of: products of vectors with vectors and with row-major matrices, and
// an activation.

/// Sum over i below `n` of a[i] * b[i], each product and each sum rounded to float, in one fixed order that is not the
/// plain one. 0 for an `n` of zero or less.
float qnl_inner_product(const float* a, const float* b, int n);

/// The product of a vector with a matrix: a row holds the weights of one input towards all outputs; the rows are walked
/// in order and added up, each product and each sum rounded to float.
/// out[j] += in[0] w[0][j], then in[1] w[1][j] and so on, for each output j and each of `frames` independent inputs.
/// A row whose input equals 0 is left out, so that it costs nothing and its weights need not be finite; a NaN is not
/// equal to 0. All frames together read the weights once. The result does not depend on how many there are.
///
/// @param in       `rows` values for each frame, frame f at in + f * in_stride
/// @param weights  row i at weights + i * row_stride
/// @param out      `width` values for each frame, frame f at out + f * out_stride; must not overlap `in`
/// Never allocates.
struct row_walk {
    const float* in;
    int in_stride;
    float* out;
    int out_stride;
    int frames;
    int rows;
    int row_stride;
    int width;
};
void qnl_walk_rows(const row_walk& walk, const float* weights);
void qnl_walk_rows(const row_walk& walk, const std::int8_t* weights);

/// The hyperbolic tangent in place, by a table of its values at the 201 multiples of 0.04 from 0 to 8: the value at the
/// nearest one, and two more terms of the series there. 1 from 8 on and for a NaN, -1 up to -8. Never allocates.
void qnl_table_tanh(const float* table, float* x, int n);
