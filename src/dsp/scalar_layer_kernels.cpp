#include <cmath>
#include <cstddef>
#include <cstdint>

#include "dsp/layer_kernels.h"
#include "dsp/reduction_order.h"

namespace {

template <class Weight>
void add_rows(const weighted_rows<Weight>& walk) {
    for (std::size_t i = 0; i < walk.count; ++i) {
        const std::ptrdiff_t row = walk.rows[i];
        const Weight* const weights = walk.weights + row * walk.row_stride;
        for (std::ptrdiff_t frame = 0; frame < static_cast<std::ptrdiff_t>(walk.frames); ++frame) {
            const float x = walk.in[frame * walk.in_stride + row];
            float* const out = walk.out + frame * walk.out_stride;
            for (std::size_t j = 0; j < walk.width; ++j)
                out[j] += x * static_cast<float>(weights[j]);
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

void table_tanh(const float* table, float* x, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const float size = std::abs(x[i]);
        if (!(x[i] < tanh_table_end)) {
            x[i] = 1.0F;
        } else if (x[i] <= -tanh_table_end) {
            x[i] = -1.0F;
        } else {
            const int place = static_cast<int>(std::floor(0.5F + 25.0F * size));
            const float d = size - 0.04F * static_cast<float>(place);
            const float y = table[place];
            const float slope = 1.0F - y * y;
            x[i] = (x[i] < 0.0F ? -1.0F : 1.0F) * (y + d * slope * (1.0F - y * d));
        }
    }
}

} // namespace

constexpr layer_kernels scalar_layer_kernels = {add_rows<float>, add_rows<std::int8_t>, inner_product,
                                                table_tanh};

layer_kernels active_layer_kernels = scalar_layer_kernels;
