#include <cstddef>
#include <cstdint>

#include "dsp/vector_kernels.h"

namespace {

template <class Weight>
void add_rows(const Weight* const* rows, std::size_t count, const weighted_rows& sums) {
    for (std::size_t row = 0; row < count; ++row) {
        for (std::size_t frame = 0; frame < sums.frames; ++frame) {
            const float x = sums.inputs[row * sums.frames + frame];
            float* const out = sums.out + static_cast<std::ptrdiff_t>(frame) * sums.out_stride;
            for (std::size_t j = 0; j < sums.width; ++j)
                out[j] += x * static_cast<float>(rows[row][j]);
        }
    }
}

} // namespace

const layer_kernels scalar_layer_kernels = {add_rows<float>, add_rows<std::int8_t>};
