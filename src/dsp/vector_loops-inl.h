// Walking over blocks with vectors of the instruction set being compiled for. Included once per set.

#if defined(QUENLIS_VECTOR_LOOPS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUENLIS_VECTOR_LOOPS_INL_H
#undef QUENLIS_VECTOR_LOOPS_INL_H
#else
#define QUENLIS_VECTOR_LOOPS_INL_H
#endif

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quenlis {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Vectors in a turn of a loop that waits for nothing but loads and stores.
constexpr std::size_t by_memory = 8;

/// How many vectors of a turn are read before the first is written. Wide ones are read ahead: where a write and
/// the reads behind it agree in the last twelve bits of their addresses, some processors let each of these reads
/// wait for the write. With narrow ones the loop waits for more instructions instead, and order serves best.
#if HWY_TARGET <= HWY_AVX3
constexpr std::size_t vectors_read_ahead = 4;
#else
constexpr std::size_t vectors_read_ahead = 1;
#endif

template <std::size_t Count>
using vector_count = std::integral_constant<std::size_t, Count>;

template <std::size_t Count, class Tag, class Walk>
HWY_INLINE std::size_t walk_rest(Tag tag, std::size_t i, std::size_t end, Walk walk) {
    if (end - i >= Count * hn::Lanes(tag)) {
        walk(tag, i, vector_count<Count>());
        i += Count * hn::Lanes(tag);
    }
    if constexpr (Count > 1)
        i = walk_rest<Count / 2>(tag, i, end, walk);
    return i;
}

/// Calls walk(tag, i, count), which handles count times Lanes(tag) elements from index i on, for the elements
/// from 0 to n - 1: `Unrolled` whole vectors of `Element` at a time, then half as many, a quarter and so on, then
/// `Group` elements at a time, of which n is a multiple. Nothing past the end is touched, and each element sees
/// the same operations whichever part it falls into.
template <class Element, std::size_t Unrolled, std::size_t Group, class Walk>
HWY_INLINE void walk_vectors(std::size_t n, Walk walk) {
    const hn::ScalableTag<Element> whole;
    const hn::CappedTag<Element, Group> last;
    const std::size_t block = Unrolled * hn::Lanes(whole);
    const std::size_t blocks_end = n / block * block;
    std::size_t i = 0;
    for (; i < blocks_end; i += block)
        walk(whole, i, vector_count<Unrolled>());
    if constexpr (Unrolled > 1)
        i = walk_rest<Unrolled / 2>(whole, i, n, walk);
    for (; i < n; i += Group)
        walk(last, i, vector_count<1>());
}

/// Calls step(tag, i) for the elements from 0 to n - 1 in order; a step handles Lanes(tag) of them from index i
/// on. `Unrolled` and `Group` as for walk_vectors.
template <class Element, std::size_t Unrolled, std::size_t Group = 1, class Step>
HWY_INLINE void for_each_vector(std::size_t n, Step step) {
    walk_vectors<Element, Unrolled, Group>(
        n, [=](auto tag, std::size_t i, auto count) HWY_ATTR __attribute__((always_inline)) {
            for (std::size_t k = 0; k < count; ++k)
                step(tag, i + k * hn::Lanes(tag));
        });
}

// Vectors made so far come as arguments: an array of them would go through memory.
template <std::size_t Count, class Tag, class Make, class... Vectors>
HWY_INLINE void make_and_store(Tag tag, float* d, std::size_t i, Make make, Vectors... made) {
    constexpr std::size_t ready = sizeof...(made);
    if constexpr (ready < Count) {
        make_and_store<Count>(tag, d, i, make, made..., make(tag, i + ready * hn::Lanes(tag)));
    } else {
        std::size_t k = 0;
        (hn::StoreU(made, tag, d + i + k++ * hn::Lanes(tag)), ...);
    }
}

/// Stores what make(tag, i) returns, a vector of the elements from index i on, for all of d from 0 to n - 1.
template <std::size_t Unrolled, std::size_t Group = 1, class Make>
HWY_INLINE void store_each_vector(float* d, std::size_t n, Make make) {
    walk_vectors<float, Unrolled, Group>(
        n, [=](auto tag, std::size_t i, auto count) HWY_ATTR __attribute__((always_inline)) {
            constexpr std::size_t ahead = std::min(decltype(count)::value, vectors_read_ahead);
            for (std::size_t k = 0; k < count; k += ahead)
                make_and_store<ahead>(tag, d, i + k * hn::Lanes(tag), make);
        });
}

/// a where a > b, else b; so b where either is NaN.
template <class V>
HWY_INLINE V larger_of(V a, V b) {
#if HWY_ARCH_X86
    return hn::Max(a, b); // the instruction's own rule
#else
    return hn::IfThenElse(hn::Gt(a, b), a, b);
#endif
}

/// a where a < b, else b; so b where either is NaN.
template <class V>
HWY_INLINE V smaller_of(V a, V b) {
#if HWY_ARCH_X86
    return hn::Min(a, b);
#else
    return hn::IfThenElse(hn::Lt(a, b), a, b);
#endif
}

} // namespace HWY_NAMESPACE
} // namespace quenlis
HWY_AFTER_NAMESPACE();

#endif
