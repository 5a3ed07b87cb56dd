#include <cstddef>
#include <cstdint>

#include "dsp/kernel_tables.h"
#include "dsp/reduction_order.h"
#include "dsp/resampler_kernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/resampler_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quenlis {
namespace HWY_NAMESPACE {
#if QUENLIS_IS_PLAIN_TARGET

const resampler_kernels& resampler_table() {
    return scalar_resampler_kernels;
}

#else
namespace hn = hwy::HWY_NAMESPACE;
namespace {

using lane_tag = hn::CappedTag<double, product_lanes>;

constexpr std::size_t vector_lanes = hn::MaxLanes(lane_tag());
constexpr std::size_t vectors_of_a_sum = product_lanes / vector_lanes;

/// Sums that are worked on at once: enough for additions not to wait for each other, few enough for 16
/// registers.
constexpr std::size_t sums_at_once = 12;
constexpr std::size_t rows_at_once = 3;

/// Vectors of each sum that are worked on at once, when there are `sums` sums.
constexpr std::size_t vectors_at_once(std::size_t sums) {
    std::size_t vectors = vectors_of_a_sum;
    while (vectors > 1 && vectors * sums > sums_at_once)
        vectors /= 2;
    return vectors;
}

/// Stretches of samples, and the rows of taps to be laid over each.
struct operands {
    const double* samples;
    std::size_t step;
    const double* taps;

    operands from_window(std::size_t window) const { return {samples + window * step, step, taps}; }
    operands from_row(std::size_t row) const { return {samples, step, taps + row * resampler_taps}; }
};

/// The vector itself, held in a register when it serves several products. Left to itself the compiler reads it
/// from memory again for each of them, which takes longer than the products.
template <std::size_t Products, class V>
HWY_INLINE V in_register(V v) {
#if HWY_ARCH_X86
    if constexpr (Products > 1)
        __asm__("" : "+v"(v.raw));
#endif
    return v;
}

/// Sums the products of the lanes of `Vectors` vectors, from lane `first` on.
template <std::size_t Windows, std::size_t Rows, std::size_t Vectors>
HWY_INLINE void sum_lanes(operands of, std::size_t first, double (&lanes)[Windows * Rows][product_lanes]) {
    const lane_tag tag;
    hn::Vec<lane_tag> sums[Windows][Rows][Vectors];
    for (auto& window : sums)
        for (auto& row : window)
            for (auto& sum : row)
                sum = hn::Zero(tag);
    for (std::size_t tap = first; tap < resampler_taps; tap += product_lanes) {
        for (std::size_t part = 0; part < Vectors; ++part) {
            const std::size_t i = tap + part * vector_lanes;
            hn::Vec<lane_tag> taps[Rows];
            for (std::size_t row = 0; row < Rows; ++row)
                taps[row] = in_register<Windows>(hn::Load(tag, of.taps + row * resampler_taps + i));
            for (std::size_t window = 0; window < Windows; ++window) {
                const auto samples = in_register<Rows>(hn::LoadU(tag, of.samples + window * of.step + i));
                for (std::size_t row = 0; row < Rows; ++row)
                    sums[window][row][part] = hn::MulAdd(samples, taps[row], sums[window][row][part]);
            }
        }
    }
    for (std::size_t window = 0; window < Windows; ++window)
        for (std::size_t row = 0; row < Rows; ++row)
            for (std::size_t part = 0; part < Vectors; ++part)
                hn::Store(sums[window][row][part], tag,
                          lanes[window * Rows + row] + first + part * vector_lanes);
}

/// All sums of `Windows` windows with `Rows` rows: each sample that is read serves `Rows` sums, each tap
/// `Windows`. @param sums  those of one window are `stride` after those of the one before
template <std::size_t Windows, std::size_t Rows>
HWY_INLINE void sum_tile(operands of, double* sums, std::size_t stride) {
    constexpr std::size_t vectors = vectors_at_once(Windows * Rows);
    HWY_ALIGN double lanes[Windows * Rows][product_lanes];
    for (std::size_t first = 0; first < product_lanes; first += vectors * vector_lanes)
        sum_lanes<Windows, Rows, vectors>(of, first, lanes);
    for (std::size_t window = 0; window < Windows; ++window)
        for (std::size_t row = 0; row < Rows; ++row)
            sums[window * stride + row] = fold_products(lanes[window * Rows + row]);
}

/// `windows` windows, `Windows` at a time, the rest half as many at a time, and so on.
template <std::size_t Windows, std::size_t Rows>
void sum_windows(operands of, std::size_t windows, double* sums, std::size_t stride) {
    std::size_t window = 0;
    for (; windows - window >= Windows; window += Windows)
        sum_tile<Windows, Rows>(of.from_window(window), sums + window * stride, stride);
    if constexpr (Windows > 1)
        if (window < windows)
            sum_windows<(Windows + 1) / 2, Rows>(of.from_window(window), windows - window,
                                                 sums + window * stride, stride);
}

/// `rows` rows, `Rows` at a time, then one fewer at a time, and so on.
template <std::size_t Rows>
void sum_rows(operands of, std::size_t windows, std::size_t rows, double* sums, std::size_t stride) {
    std::size_t row = 0;
    for (; rows - row >= Rows; row += Rows)
        sum_windows<sums_at_once / Rows, Rows>(of.from_row(row), windows, sums + row, stride);
    if constexpr (Rows > 1)
        if (row < rows)
            sum_rows<Rows - 1>(of.from_row(row), windows, rows - row, sums + row, stride);
}

void inner_products(const double* samples, std::size_t step, std::size_t windows, const double* taps,
                    std::size_t rows, double* sums, std::size_t stride) {
    sum_rows<rows_at_once>({samples, step, taps}, windows, rows, sums, stride);
}

} // namespace

const resampler_kernels& resampler_table() {
    static constexpr resampler_kernels table = {inner_products};
    return table;
}

#endif
} // namespace HWY_NAMESPACE
} // namespace quenlis
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quenlis {
HWY_EXPORT(resampler_table);

const resampler_kernels& resampler_kernels_of(std::int64_t target) {
    return kernels_of(HWY_DISPATCH_TABLE(resampler_table), target);
}
} // namespace quenlis
#endif
