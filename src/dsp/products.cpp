#include "dsp/products.h"

#include <algorithm>
#include <cstddef>

#include "dsp/layer_kernels.h"
#include "dsp/vector_kernels.h"

namespace {

constexpr int chunk_rows = 64;

void add_rows(const float* const* rows, std::size_t count, const weighted_rows& sums) {
    active_kernels.layers->add_float_rows(rows, count, sums);
}

void add_rows(const std::int8_t* const* rows, std::size_t count, const weighted_rows& sums) {
    active_kernels.layers->add_byte_rows(rows, count, sums);
}

/// Up to chunk_rows consecutive rows of a walk for up to four of its frames.
template <class Weight>
class chunk {
public:
    chunk(const row_walk& walk, const Weight* weights, int first_row, int first_frame, int frames)
        : walk_(walk),
          weights_(weights),
          first_row_(first_row),
          rows_(std::min(chunk_rows, walk.rows - first_row)),
          first_frame_(first_frame),
          frames_(frames) {}

    void add() const {
        if (same_rows_in_all_frames()) {
            add_frames(0, frames_);
        } else {
            for (int frame = 0; frame < frames_; ++frame)
                add_frames(frame, 1);
        }
    }

private:
    float input(int frame, int row) const {
        return walk_.in[(first_frame_ + frame) * walk_.in_stride + first_row_ + row];
    }

    bool same_rows_in_all_frames() const {
        for (int frame = 1; frame < frames_; ++frame)
            for (int row = 0; row < rows_; ++row)
                if ((input(frame, row) == 0.0F) != (input(0, row) == 0.0F))
                    return false;
        return true;
    }

    void add_frames(int first, int frames) const {
        const Weight* rows[chunk_rows];
        float inputs[max_walked_frames * chunk_rows];
        std::size_t count = 0;
        for (int row = 0; row < rows_; ++row) {
            if (input(first, row) == 0.0F)
                continue;
            for (int frame = 0; frame < frames; ++frame)
                inputs[count * static_cast<std::size_t>(frames) + static_cast<std::size_t>(frame)] =
                    input(first + frame, row);
            rows[count++] = weights_ + static_cast<std::ptrdiff_t>(first_row_ + row) * walk_.row_stride;
        }
        float* const out = walk_.out + (first_frame_ + first) * walk_.out_stride;
        add_rows(rows, count,
                 {inputs, static_cast<std::size_t>(frames), out, walk_.out_stride,
                  static_cast<std::size_t>(walk_.width)});
    }

    const row_walk& walk_;
    const Weight* weights_;
    int first_row_;
    int rows_;
    int first_frame_;
    int frames_;
};

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
            chunk<Weight>(walk, weights, row, frame, frames).add();
    }
}

} // namespace

float qnl_inner_product(const float* a, const float* b, int n) {
    return n > 0 ? active_kernels.layers->inner_product(a, b, static_cast<std::size_t>(n)) : 0.0F;
}

void qnl_walk_rows(const row_walk& walk, const float* weights) {
    walk_all_rows(walk, weights);
}

void qnl_walk_rows(const row_walk& walk, const std::int8_t* weights) {
    walk_all_rows(walk, weights);
}
