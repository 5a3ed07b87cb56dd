#include "dsp/products.h"

#include <algorithm>
#include <cstddef>

#include "dsp/layer_kernels.h"
#include "dsp/vector_kernels.h"

namespace {

constexpr int chunk_rows = 512;

void add_rows(const weighted_rows<float>& walk) {
    active_layer_kernels.add_float_rows(walk);
}

void add_rows(const weighted_rows<std::int8_t>& walk) {
    active_layer_kernels.add_byte_rows(walk);
}

/// Numbers of the inputs that are not zero.
std::size_t find_rows(const float* in, int first, int end, std::int32_t* rows) {
    std::size_t count = 0;
    for (int row = first; row < end; ++row) {
        rows[count] = row;
        count += in[row] != 0.0F ? 1U : 0U;
    }
    return count;
}

/// Whether each row is to be walked in all frames or in none.
bool same_rows(const float* in, std::ptrdiff_t in_stride, int frames, int first, int end) {
    int different = 0;
    for (int frame = 1; frame < frames; ++frame)
        for (int row = first; row < end; ++row)
            different += (in[frame * in_stride + row] == 0.0F) != (in[row] == 0.0F) ? 1 : 0;
    return different == 0;
}

/// Adds up to chunk_rows rows to frames that all walk the same of them, or to one frame after the other.
template <class Weight>
void walk_chunk(const row_walk& walk, const Weight* weights, int first_frame, int frames, int first,
                int end) {
    const float* const in = walk.in + first_frame * walk.in_stride;
    if (frames > 1 && !same_rows(in, walk.in_stride, frames, first, end)) {
        for (int frame = first_frame; frame < first_frame + frames; ++frame)
            walk_chunk(walk, weights, frame, 1, first, end);
        return;
    }
    std::int32_t rows[chunk_rows];
    const std::size_t count = find_rows(in, first, end, rows);
    add_rows({weights, walk.row_stride, rows, count, in, walk.in_stride, static_cast<std::size_t>(frames),
              walk.out + first_frame * walk.out_stride, walk.out_stride,
              static_cast<std::size_t>(walk.width)});
}

/// The widest group of frames that the kernels take, of those left.
int next_group(int frames_left) {
    return frames_left >= 4 ? 4 : frames_left >= 2 ? 2 : 1;
}

template <class Weight>
void walk_all_rows(const row_walk& walk, const Weight* weights) {
    int frames = 0;
    for (int frame = 0; frame < walk.frames; frame += frames) {
        frames = next_group(walk.frames - frame);
        for (int row = 0; row < walk.rows; row += chunk_rows)
            walk_chunk(walk, weights, frame, frames, row, std::min(row + chunk_rows, walk.rows));
    }
}

} // namespace

float qnl_inner_product(const float* a, const float* b, int n) {
    return n > 0 ? active_layer_kernels.inner_product(a, b, static_cast<std::size_t>(n)) : 0.0F;
}

void qnl_walk_rows(const row_walk& walk, const float* weights) {
    walk_all_rows(walk, weights);
}

void qnl_walk_rows(const row_walk& walk, const std::int8_t* weights) {
    walk_all_rows(walk, weights);
}

void qnl_table_tanh(const float* table, float* x, int n) {
    if (n > 0)
        active_layer_kernels.table_tanh(table, x, static_cast<std::size_t>(n));
}
