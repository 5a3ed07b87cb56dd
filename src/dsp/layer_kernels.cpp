#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "dsp/kernel_tables.h"
#include "dsp/layer_kernels.h"
#include "dsp/reduction_order.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/layer_kernels.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quenlis {
namespace HWY_NAMESPACE {
#if QUENLIS_IS_PLAIN_TARGET

const layer_kernels& layer_table() {
    return scalar_layer_kernels;
}

#else
namespace hn = hwy::HWY_NAMESPACE;
namespace {

// Rows that are read side by side, so that a sum goes through memory once for all of them; and vectors of sums that
// grow at the same time, enough to hide how long an addition takes.
constexpr std::size_t rows_at_once = 8;
constexpr std::size_t sums_at_once = 8;

// Eight of the widest rows: large matrices come from beyond the first cache levels, and the tiles' jumps from row to row
// are lost on hardware that foresees.
constexpr std::size_t floats_ahead = rows_at_once * 512;

template <class Tag>
HWY_INLINE hn::Vec<Tag> load_weights(Tag tag, const float* row) {
    hwy::Prefetch(row + floats_ahead);
    return hn::LoadU(tag, row);
}

template <class Tag>
HWY_INLINE hn::Vec<Tag> load_weights(Tag tag, const std::int8_t* row) {
    const hn::Rebind<std::int8_t, Tag> bytes;
    const hn::Rebind<std::int32_t, Tag> words;
    return hn::ConvertTo(tag, hn::PromoteTo(words, hn::LoadU(bytes, row)));
}

/// Adds the rows from number `first` to before `end` to `Vectors` vectors of sums of each frame, from output j on.
template <std::size_t Frames, std::size_t Vectors, class Tag, class Weight>
HWY_INLINE void add_to_tile(Tag tag, const weighted_rows<Weight>& walk, std::size_t first, std::size_t end,
                            std::size_t j) {
    const std::size_t lanes = hn::Lanes(tag);
    const auto out_of = [&](std::size_t frame, std::size_t v) {
        return walk.out + static_cast<std::ptrdiff_t>(frame) * walk.out_stride + j + v * lanes;
    };
    hn::Vec<Tag> tile[Frames][Vectors];
    for (std::size_t frame = 0; frame < Frames; ++frame)
        for (std::size_t v = 0; v < Vectors; ++v)
            tile[frame][v] = hn::LoadU(tag, out_of(frame, v));
    for (std::size_t i = first; i < end; ++i) {
        const std::ptrdiff_t row = walk.rows[i];
        const Weight* const row_weights = walk.weights + row * walk.row_stride + j;
        hn::Vec<Tag> x[Frames];
        for (std::size_t frame = 0; frame < Frames; ++frame)
            x[frame] = hn::Set(tag, walk.in[static_cast<std::ptrdiff_t>(frame) * walk.in_stride + row]);
        for (std::size_t v = 0; v < Vectors; ++v) {
            const auto weights = load_weights(tag, row_weights + v * lanes);
            for (std::size_t frame = 0; frame < Frames; ++frame)
                tile[frame][v] = hn::Add(tile[frame][v], hn::Mul(x[frame], weights));
        }
    }
    for (std::size_t frame = 0; frame < Frames; ++frame)
        for (std::size_t v = 0; v < Vectors; ++v)
            hn::StoreU(tile[frame][v], tag, out_of(frame, v));
}

/// Adds a few rows to all sums.
template <std::size_t Frames, class Weight>
HWY_INLINE void add_group(const weighted_rows<Weight>& walk, std::size_t first, std::size_t end) {
    const hn::ScalableTag<float> whole;
    const hn::CappedTag<float, 1> single;
    constexpr std::size_t vectors = sums_at_once / Frames;
    const std::size_t lanes = hn::Lanes(whole);
    std::size_t j = 0;
    for (; j + vectors * lanes <= walk.width; j += vectors * lanes)
        add_to_tile<Frames, vectors>(whole, walk, first, end, j);
    for (; j + lanes <= walk.width; j += lanes)
        add_to_tile<Frames, 1>(whole, walk, first, end, j);
    for (; j < walk.width; ++j)
        add_to_tile<Frames, 1>(single, walk, first, end, j);
}

template <std::size_t Frames, class Weight>
void add_all(const weighted_rows<Weight>& walk) {
    for (std::size_t first = 0; first < walk.count; first += rows_at_once)
        add_group<Frames>(walk, first, std::min(first + rows_at_once, walk.count));
}

template <class Weight>
void add_rows(const weighted_rows<Weight>& walk) {
    if (walk.frames == 4)
        add_all<4>(walk);
    else if (walk.frames == 2)
        add_all<2>(walk);
    else
        add_all<1>(walk);
}

float inner_product(const float* a, const float* b, std::size_t n) {
    const hn::CappedTag<float, reduction_lanes> tag;
    constexpr std::size_t vectors = reduction_lanes / hn::MaxLanes(tag);
    const std::size_t lanes_of_vector = hn::Lanes(tag);
    hn::Vec<decltype(tag)> sums[vectors];
    for (auto& sum : sums)
        sum = hn::Zero(tag);
    const std::size_t whole_end = n / reduction_lanes * reduction_lanes;
    for (std::size_t i = 0; i < whole_end; i += reduction_lanes)
        for (std::size_t v = 0; v < vectors; ++v) {
            const std::size_t at = i + v * lanes_of_vector;
            sums[v] = hn::Add(hn::Mul(hn::LoadU(tag, a + at), hn::LoadU(tag, b + at)), sums[v]);
        }
    HWY_ALIGN float lanes[reduction_lanes];
    for (std::size_t v = 0; v < vectors; ++v)
        hn::Store(sums[v], tag, lanes + v * lanes_of_vector);
    float tail[reduction_lanes];
    for (std::size_t i = whole_end; i < n; ++i)
        tail[i - whole_end] = a[i] * b[i];
    return combine_lanes(lanes, tail, n - whole_end, added);
}

} // namespace

const layer_kernels& layer_table() {
    static constexpr layer_kernels table = {add_rows<float>, add_rows<std::int8_t>, inner_product};
    return table;
}

#endif
} // namespace HWY_NAMESPACE
} // namespace quenlis
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quenlis {

HWY_EXPORT(layer_table);

const layer_kernels& layer_kernels_of(std::int64_t target) {
    return kernels_of(HWY_DISPATCH_TABLE(layer_table), target);
}

} // namespace quenlis
#endif
