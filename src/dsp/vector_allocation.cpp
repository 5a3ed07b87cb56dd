#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "dsp/vector_primitives.h"

namespace {

constexpr std::size_t alignment = 64;
constexpr std::size_t slot_size = 8; // in front of the storage, for the address that the heap gave
static_assert(sizeof(void*) <= slot_size);

void* allocate(int n, std::size_t element_size) {
    if (n <= 0 || static_cast<std::size_t>(n) > INT_MAX / element_size)
        return nullptr;
    const std::size_t size = static_cast<std::size_t>(n) * element_size;
    void* const heap_block = std::malloc(size + alignment + slot_size);
    if (heap_block == nullptr)
        return nullptr;
    const auto first = reinterpret_cast<std::uintptr_t>(heap_block) + slot_size;
    const std::size_t padding = (alignment - first % alignment) % alignment;
    auto* const storage = static_cast<unsigned char*>(heap_block) + slot_size + padding;
    std::memcpy(storage - slot_size, &heap_block, sizeof heap_block);
    return storage;
}

template <class Element>
std::unique_ptr<Element[], qnl_deleter> make_buffer(Element* storage, int n) {
    if (storage == nullptr && n > 0)
        throw std::bad_alloc();
    qnl_zero(storage, n);
    return std::unique_ptr<Element[], qnl_deleter>(storage);
}

} // namespace

float* qnl_malloc_32f(int n) {
    return static_cast<float*>(allocate(n, sizeof(float)));
}

short* qnl_malloc_16s(int n) {
    return static_cast<short*>(allocate(n, sizeof(short)));
}

complex32f* qnl_malloc_32fc(int n) {
    return static_cast<complex32f*>(allocate(n, sizeof(complex32f)));
}

void qnl_free(void* p) {
    if (p == nullptr)
        return;
    void* heap_block = nullptr;
    std::memcpy(&heap_block, static_cast<unsigned char*>(p) - slot_size, sizeof heap_block);
    std::free(heap_block);
}

qnl_buffer_32f qnl_make_buffer_32f(int n) {
    return make_buffer(qnl_malloc_32f(n), n);
}

qnl_buffer_16s qnl_make_buffer_16s(int n) {
    return make_buffer(qnl_malloc_16s(n), n);
}

qnl_buffer_32fc qnl_make_buffer_32fc(int n) {
    return make_buffer(qnl_malloc_32fc(n), n);
}
