#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "dsp/kernel_tables.h"
#include "dsp/layer_kernels.h"
#include "dsp/reduction_order.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/layer_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "dsp/vector_loops-inl.h"

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

// Rows that are read side by side, so that a sum goes through memory once for all of them: as many as hardware foresees
// streams for and registers hold factors of.
constexpr std::size_t most_rows_at_once = 8;
constexpr std::size_t factors_at_once = HWY_TARGET <= HWY_AVX3 ? 16 : 8;

constexpr std::size_t most_frames = 4;
constexpr std::size_t outputs_at_once = 512;

/// Room for sums at a distance from the weights: much hardware takes a read for one of what was just written when their
/// addresses differ by whole pages, and waits. Half a row is far from all rows whose length divides a page.
class distant_sums {
public:
    distant_sums(const void* weights, std::size_t row_bytes)
        : first_(room_ + (reinterpret_cast<std::uintptr_t>(weights) + row_bytes / 2 -
                          reinterpret_cast<std::uintptr_t>(room_)) %
                             page_bytes / line_bytes * line_bytes / sizeof(float)) {}

    /// outputs_at_once for each frame.
    float* data() { return first_; }

private:
    static constexpr std::size_t page_bytes = 4096;
    static constexpr std::size_t line_bytes = 64;

    alignas(line_bytes) float room_[most_frames * outputs_at_once + page_bytes / sizeof(float)];
    float* first_;
};

template <class Tag>
HWY_INLINE hn::Vec<Tag> load_weights(Tag tag, const float* row) {
    return hn::LoadU(tag, row);
}

template <class Tag>
HWY_INLINE hn::Vec<Tag> load_weights(Tag tag, const std::int8_t* row) {
    const hn::Rebind<std::int8_t, Tag> bytes;
    const hn::Rebind<std::int32_t, Tag> words;
    return hn::ConvertTo(tag, hn::PromoteTo(words, hn::LoadU(bytes, row)));
}

/// Adds `Rows` rows from number `first` on to the sums, from output j on as far as whole vectors go.
/// @return the output behind them
template <std::size_t Frames, std::size_t Rows, class Tag, class Weight>
HWY_INLINE std::size_t add_side_by_side(Tag tag, const weighted_rows<Weight>& walk, std::size_t first,
                                        float* sums, std::size_t j) {
    const Weight* weights[Rows];
    hn::Vec<Tag> x[Rows][Frames];
    for (std::size_t r = 0; r < Rows; ++r) {
        const std::ptrdiff_t row = walk.rows[first + r];
        weights[r] = walk.weights + row * walk.row_stride;
        for (std::size_t frame = 0; frame < Frames; ++frame)
            x[r][frame] = hn::Set(tag, walk.in[static_cast<std::ptrdiff_t>(frame) * walk.in_stride + row]);
    }
    for (; j + hn::Lanes(tag) <= walk.width; j += hn::Lanes(tag)) {
        hn::Vec<Tag> sum[Frames];
        for (std::size_t frame = 0; frame < Frames; ++frame)
            sum[frame] = hn::LoadU(tag, sums + frame * outputs_at_once + j);
        for (std::size_t r = 0; r < Rows; ++r) {
            const auto w = load_weights(tag, weights[r] + j);
            for (std::size_t frame = 0; frame < Frames; ++frame)
                sum[frame] = hn::Add(sum[frame], hn::Mul(x[r][frame], w));
        }
        for (std::size_t frame = 0; frame < Frames; ++frame)
            hn::StoreU(sum[frame], tag, sums + frame * outputs_at_once + j);
    }
    return j;
}

/// Adds the rows from number `first` on, so many at once as long as there are so many.
/// @return the number of the row behind them
template <std::size_t Frames, std::size_t Rows, class Weight>
HWY_INLINE std::size_t add_groups(const weighted_rows<Weight>& walk, std::size_t first, float* sums) {
    const hn::ScalableTag<float> whole;
    const hn::CappedTag<float, 4> few;
    const hn::CappedTag<float, 1> single;
    for (; first + Rows <= walk.count; first += Rows) {
        std::size_t j = add_side_by_side<Frames, Rows>(whole, walk, first, sums, 0);
        j = add_side_by_side<Frames, Rows>(few, walk, first, sums, j);
        add_side_by_side<Frames, Rows>(single, walk, first, sums, j);
    }
    return first;
}

/// Adds all rows to the sums of up to outputs_at_once outputs.
template <std::size_t Frames, class Weight>
void add_columns(const weighted_rows<Weight>& walk) {
    constexpr std::size_t rows_at_once = std::min(most_rows_at_once, factors_at_once / Frames);
    distant_sums room(walk.weights, static_cast<std::size_t>(walk.row_stride) * sizeof(Weight));
    float* const sums = room.data();
    const auto out_of = [&](std::size_t frame) {
        return walk.out + static_cast<std::ptrdiff_t>(frame) * walk.out_stride;
    };
    for (std::size_t frame = 0; frame < Frames; ++frame)
        std::copy_n(out_of(frame), walk.width, sums + frame * outputs_at_once);
    const std::size_t rest = add_groups<Frames, rows_at_once>(walk, 0, sums);
    add_groups<Frames, 1>(walk, rest, sums);
    for (std::size_t frame = 0; frame < Frames; ++frame)
        std::copy_n(sums + frame * outputs_at_once, walk.width, out_of(frame));
}

template <std::size_t Frames, class Weight>
void add_all(const weighted_rows<Weight>& walk) {
    weighted_rows<Weight> columns = walk;
    for (std::size_t j = 0; j < walk.width; j += outputs_at_once) {
        columns.weights = walk.weights + j;
        columns.out = walk.out + j;
        columns.width = std::min(outputs_at_once, walk.width - j);
        add_columns<Frames>(columns);
    }
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

void table_tanh(const float* table, float* x, std::size_t n) {
    for_each_vector<float, 2>(n, [&](auto tag, std::size_t i) HWY_ATTR {
        const hn::RebindToSigned<decltype(tag)> integers;
        const auto one = hn::Set(tag, 1.0F);
        const auto end = hn::Set(tag, tanh_table_end);
        const auto a = hn::LoadU(tag, x + i);
        const auto size = smaller_of(hn::Abs(a), end);
        const auto place =
            hn::ConvertTo(integers, hn::Add(hn::Set(tag, 0.5F), hn::Mul(hn::Set(tag, 25.0F), size)));
        const auto y = hn::GatherIndex(tag, table, place);
        const auto d = hn::Sub(size, hn::Mul(hn::Set(tag, 0.04F), hn::ConvertTo(tag, place)));
        const auto slope = hn::Sub(one, hn::Mul(y, y));
        const auto bend = hn::Sub(one, hn::Mul(y, d));
        const auto positive = hn::Add(y, hn::Mul(hn::Mul(d, slope), bend));
        const auto sign = hn::IfThenElse(hn::Lt(a, hn::Zero(tag)), hn::Neg(one), one);
        const auto inside = hn::IfThenElse(hn::Lt(a, end), hn::Mul(sign, positive), one);
        hn::StoreU(hn::IfThenElse(hn::Le(a, hn::Neg(end)), hn::Neg(one), inside), tag, x + i);
    });
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
    static constexpr layer_kernels table = {add_rows<float>, add_rows<std::int8_t>, inner_product,
                                            table_tanh};
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
