/// A chain of recursive filters, applied to a block as one frequency response.
#pragma once

#include "dsp/fft.h"
#include "dsp/filter.h"
#include "dsp/vector_primitives.h"

#include <memory>
#include <vector>

/// Filters a block by the product of the chain's responses at 512 points of the unit circle. Every block is
/// filtered as though silence came before it and loses its tail, with the circular wrap of a 512-point product:
/// a measure of weighted energy, not a filter for audio that is heard. One thread at a time.
class quenlis_EQ {
public:
    quenlis_EQ();

    /// Appends a filter and works the response out again; arguments as those of quenlis_filter. Allocates.
    void add_filter(int number, const float* a, const float* b);

    /// @param count  samples, 1 to 512, the same in every call; `out` may be `in`
    /// At least one filter must have been added. Never allocates.
    void process(const float* in, float* out, int count);

private:
    static constexpr int size_ = 512;

    std::vector<std::unique_ptr<quenlis_filter>> filters_;
    qnl_buffer_32fc response_;
    qnl_buffer_32fc spectrum_;
    quenlis_FFT real_transform_;
    quenlis_FFT complex_transform_;
};
