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
    : m_storage(allocate_storage(channels, checked_size(size))),
      m_read_index(0),
      m_write_index(0),
      m_size(size),
      m_mask(static_cast<std::uint32_t>(size) - 1),
      m_amount(0),
      m_channels(channels) {}

circular_buffer::~circular_buffer() {
    free_storage(m_storage, m_channels);
}

int circular_buffer::calc_amount_data_circ_buf() const {
    const auto distance = static_cast<std::int32_t>(m_write_index - m_read_index);
    return distance < 0 ? distance + m_size : distance;
}

int circular_buffer::calc_space_circ_buf() const {
    return m_size - calc_amount_data_circ_buf();
}

int circular_buffer::write_BLOCK(const float* in, int n) {
    if (in == nullptr)
        return 0;
    if (n <= 0)
        return n;
    if (m_size - m_amount < n)
        return 0;
    for (int channel = 0; channel < m_channels; ++channel)
        store(channel, in + static_cast<std::ptrdiff_t>(channel) * n, n);
    advance_write(n);
    return n;
}

int circular_buffer::read_BLOCK(float* out, int n) {
    if (out == nullptr)
        return 0;
    if (n <= 0)
        return n;
    if (m_amount < n || n > m_size)
        return 0;
    for (int channel = 0; channel < m_channels; ++channel)
        fetch(channel, out + static_cast<std::ptrdiff_t>(channel) * n, n);
    advance_read(n);
    return n;
}

int circular_buffer::write_POINTER(const float* const* in, int n) {
    if (any_null(in, m_channels))
        return 0;
    if (n <= 0)
        return n;
    if (calc_space_circ_buf() < n)
        return 0;
    for (int channel = 0; channel < m_channels; ++channel)
        store(channel, in[channel], n);
    advance_write(n);
    return n;
}

int circular_buffer::read_POINTER(float* const* out, int n) {
    if (any_null(out, m_channels))
        return 0;
    if (n <= 0)
        return n;
    if (calc_amount_data_circ_buf() < n)
        return 0;
    for (int channel = 0; channel < m_channels; ++channel)
        fetch(channel, out[channel], n);
    advance_read(n);
    return n;
}

void circular_buffer::store(int channel, const float* in, int n) {
    const int before_wrap = std::min(n, m_size - static_cast<int>(m_write_index));
    std::memcpy(m_storage[channel] + m_write_index, in, bytes(before_wrap));
    std::memcpy(m_storage[channel], in + before_wrap, bytes(n - before_wrap));
}

void circular_buffer::fetch(int channel, float* out, int n) const {
    const int before_wrap = std::min(n, m_size - static_cast<int>(m_read_index));
    std::memcpy(out, m_storage[channel] + m_read_index, bytes(before_wrap));
    std::memcpy(out + before_wrap, m_storage[channel], bytes(n - before_wrap));
}

void circular_buffer::advance_write(int n) {
    m_write_index = (m_write_index + static_cast<std::uint32_t>(n)) & m_mask;
    m_amount += n;
}

void circular_buffer::advance_read(int n) {
    m_read_index = (m_read_index + static_cast<std::uint32_t>(n)) & m_mask;
    m_amount -= n;
}
