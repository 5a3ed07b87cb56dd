#pragma once

#include <cstdint>

/// A ring of frames that turns the host's block size into the fixed frame size of an effect. Its channels
/// advance together. One thread at a time; after construction nothing allocates.
///
/// The fill level is known in two ways, and each operation uses its own, on purpose: a running counter (the
/// block pair) and the distance between the two indices (the pointer pair and the two queries). They agree
/// except when the ring is full: then the counter says `size` and the distance 0. Keep to one pair per ring.
class circular_buffer {
public:
    /// An empty ring of `size` frames, a power of two; its storage is plain heap memory, not cleared.
    /// Any other `size` is a programming fault and ends the process through std::terminate.
    /// Throws std::bad_alloc when the heap is exhausted.
    circular_buffer(int channels, int size);
    ~circular_buffer();

    circular_buffer(const circular_buffer&) = delete;
    circular_buffer& operator=(const circular_buffer&) = delete;

    /// Frames held, and frames free, by the distance of the indices.
    int calc_amount_data_circ_buf() const;
    int calc_space_circ_buf() const;

    /// Write or read `n` frames of a planar block, channel c's frame i at [c * n + i]: all of them, or none
    /// when the counter leaves less room or data. Return the frames moved, `n` or 0. A null block gives 0;
    /// an `n` of zero or less moves nothing and is returned, one above the ring's size is refused.
    int write_BLOCK(const float* in, int n);
    int read_BLOCK(float* out, int n);

    /// The same with one pointer per channel, judged by the distance of the indices. A null array or a null
    /// pointer for any channel gives 0. A write into a ring that is full by the counter overwrites it.
    int write_POINTER(const float* const* in, int n);
    int read_POINTER(float* const* out, int n);

private:
    void store(int channel, const float* in, int n);
    void fetch(int channel, float* out, int n) const;
    void advance_write(int n);
    void advance_read(int n);

    float** storage_;
    std::uint32_t read_index_ = 0;
    std::uint32_t write_index_ = 0;
    std::int32_t size_;
    std::uint32_t mask_;
    std::int32_t amount_ = 0;
    std::int32_t channels_;
};
