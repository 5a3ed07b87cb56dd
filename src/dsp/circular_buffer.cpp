#include "dsp/circular_buffer.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

namespace {

int checked_size(int size) {
    if (size <= 0 || (size & (size - 1)) != 0)
        std::terminate();
    return size;
}

void free_storage(float** storage, int channels) {
    for (int channel = 0; channel < channels; ++channel)
        std::free(storage[channel]);
    std::free(storage);
}

float** allocate_storage(int channels, int size) {
    auto** storage = static_cast<float**>(std::calloc(static_cast<std::size_t>(channels), sizeof(float*)));
    if (storage == nullptr)
        throw std::bad_alloc();
    for (int channel = 0; channel < channels; ++channel) {
        storage[channel] = static_cast<float*>(std::malloc(static_cast<std::size_t>(size) * sizeof(float)));
        if (storage[channel] == nullptr) {
            free_storage(storage, channels);
            throw std::bad_alloc();
        }
    }
    return storage;
}

bool any_null(const float* const* pointers, int channels) {
    return pointers == nullptr || std::find(pointers, pointers + channels, nullptr) != pointers + channels;
}

std::size_t bytes(int frames) {
    return static_cast<std::size_t>(frames) * sizeof(float);
}

} // namespace

circular_buffer::circular_buffer(int channels, int size)
    : storage_(allocate_storage(channels, checked_size(size))),
      size_(size),
      mask_(static_cast<std::uint32_t>(size) - 1),
      channels_(channels) {}

circular_buffer::~circular_buffer() {
    free_storage(storage_, channels_);
}

int circular_buffer::calc_amount_data_circ_buf() const {
    const auto distance = static_cast<std::int32_t>(write_index_ - read_index_);
    return distance < 0 ? distance + size_ : distance;
}

int circular_buffer::calc_space_circ_buf() const {
    return size_ - calc_amount_data_circ_buf();
}

int circular_buffer::write_BLOCK(const float* in, int n) {
    if (in == nullptr)
        return 0;
    if (n <= 0)
        return n;
    if (size_ - amount_ < n)
        return 0;
    for (int channel = 0; channel < channels_; ++channel)
        store(channel, in + static_cast<std::ptrdiff_t>(channel) * n, n);
    advance_write(n);
    return n;
}

int circular_buffer::read_BLOCK(float* out, int n) {
    if (out == nullptr)
        return 0;
    if (n <= 0)
        return n;
    if (amount_ < n || n > size_)
        return 0;
    for (int channel = 0; channel < channels_; ++channel)
        fetch(channel, out + static_cast<std::ptrdiff_t>(channel) * n, n);
    advance_read(n);
    return n;
}

int circular_buffer::write_POINTER(const float* const* in, int n) {
    if (any_null(in, channels_))
        return 0;
    if (n <= 0)
        return n;
    if (calc_space_circ_buf() < n)
        return 0;
    for (int channel = 0; channel < channels_; ++channel)
        store(channel, in[channel], n);
    advance_write(n);
    return n;
}

int circular_buffer::read_POINTER(float* const* out, int n) {
    if (any_null(out, channels_))
        return 0;
    if (n <= 0)
        return n;
    if (calc_amount_data_circ_buf() < n)
        return 0;
    for (int channel = 0; channel < channels_; ++channel)
        fetch(channel, out[channel], n);
    advance_read(n);
    return n;
}

void circular_buffer::store(int channel, const float* in, int n) {
    const int before_wrap = std::min(n, size_ - static_cast<int>(write_index_));
    std::memcpy(storage_[channel] + write_index_, in, bytes(before_wrap));
    std::memcpy(storage_[channel], in + before_wrap, bytes(n - before_wrap));
}

void circular_buffer::fetch(int channel, float* out, int n) const {
    const int before_wrap = std::min(n, size_ - static_cast<int>(read_index_));
    std::memcpy(out, storage_[channel] + read_index_, bytes(before_wrap));
    std::memcpy(out + before_wrap, storage_[channel], bytes(n - before_wrap));
}

void circular_buffer::advance_write(int n) {
    write_index_ = (write_index_ + static_cast<std::uint32_t>(n)) & mask_;
    amount_ += n;
}

void circular_buffer::advance_read(int n) {
    read_index_ = (read_index_ + static_cast<std::uint32_t>(n)) & mask_;
    amount_ -= n;
}
