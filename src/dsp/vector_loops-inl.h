// Walking over blocks with vectors of the instruction set being compiled for. Included once per set.

#if defined(QUENLIS_VECTOR_LOOPS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUENLIS_VECTOR_LOOPS_INL_H
#undef QUENLIS_VECTOR_LOOPS_INL_H
#else
#define QUENLIS_VECTOR_LOOPS_INL_H
#endif

#include <cstddef>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quenlis {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

template <std::size_t Count, class Tag, class Step>
HWY_INLINE void step_over(Tag tag, std::size_t i, Step step) {
    for (std::size_t k = 0; k < Count; ++k)
        step(tag, i + k * hn::Lanes(tag));
}

/// Calls step(tag, i) for the elements from 0 to n - 1: `Unrolled` whole vectors of `Element` at a time, half
/// as many once, then one at a time, then `Group` elements at a time, of which n is a multiple. A step
/// handles Lanes(tag) elements from index i on. Nothing past the end is touched, and each element sees the
/// same operations whichever part it falls into. Steps are taken in order: stores out of order cost twice the
/// time.
template <class Element, std::size_t Unrolled, std::size_t Group = 1, class Step>
HWY_INLINE void for_each_vector(std::size_t n, Step step) {
    const hn::ScalableTag<Element> whole;
    const hn::CappedTag<Element, Group> last;
    const std::size_t lanes = hn::Lanes(whole);
    const std::size_t block = Unrolled * lanes;
    const std::size_t blocks_end = n / block * block;
    const std::size_t whole_end = n / lanes * lanes;
    std::size_t i = 0;
    for (; i < blocks_end; i += block)
        step_over<Unrolled>(whole, i, step);
    if constexpr (Unrolled >= 4) {
        if (whole_end - i >= block / 2) {
            step_over<Unrolled / 2>(whole, i, step);
            i += block / 2;
        }
    }
    for (; i < whole_end; i += lanes)
        step(whole, i);
    for (; i < n; i += Group)
        step(last, i);
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
