#include <cstddef>
#include <cstdint>

#include "dsp/layer_kernels.h"
#include "dsp/reduction_order.h"

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

float inner_product(const float* a, const float* b, std::size_t n) {
    float lanes[reduction_lanes] = {};
    const std::size_t whole_end = n / reduction_lanes * reduction_lanes;
    for (std::size_t i = 0; i < whole_end; i += reduction_lanes)
        for (std::size_t lane = 0; lane < reduction_lanes; ++lane)
            lanes[lane] = added(a[i + lane] * b[i + lane], lanes[lane]);
    float tail[reduction_lanes];
    for (std::size_t i = whole_end; i < n; ++i)
        tail[i - whole_end] = a[i] * b[i];
    return combine_lanes(lanes, tail, n - whole_end, added);
}

} // namespace

const layer_kernels scalar_layer_kernels = {add_rows<float>, add_rows<std::int8_t>, inner_product};
