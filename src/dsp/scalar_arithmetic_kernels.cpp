#include <cmath>
#include <cstddef>
#include <limits>

#include "dsp/reduction_order.h"
#include "dsp/vector_kernels.h"

namespace {

void set(float* x, float c, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        x[i] = c;
}

void add(const float* a, const float* b, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = a[i] + b[i];
}

void add_constant(const float* a, float* d, float c, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = a[i] + c;
}

void subtract(const float* a, const float* b, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = b[i] - a[i];
}

void multiply(const float* a, const float* b, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = a[i] * b[i];
}

void multiply_constant(const float* a, float* d, float c, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = a[i] * c;
}

void divide(const float* a, const float* b, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = b[i] / a[i];
}

void divide_by_constant(const float* a, float* d, float c, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = a[i] / c;
}

void divide_constant(const float* a, float* d, float c, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = c / a[i];
}

void absolute(const float* a, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = std::fabs(a[i]);
}

void square(const float* a, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = a[i] * a[i];
}

void square_root(const float* a, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = std::sqrt(a[i]);
}

void larger(const float* a, const float* b, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = a[i] > b[i] ? a[i] : b[i];
}

void add_and_scale(const float* a, const float* b, float* d, float c, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = (a[i] + b[i]) * c;
}

void scale_and_add_twice(float* x, float c, float* first, float* second, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        x[i] *= c;
        first[i] += x[i];
        second[i] += x[i];
    }
}

template <class Combine>
float reduce(const float* a, std::size_t n, float start, Combine combine) {
    float lanes[reduction_lanes];
    for (float& lane : lanes)
        lane = start;
    std::size_t i = 0;
    for (; n - i >= reduction_lanes; i += reduction_lanes)
        for (std::size_t lane = 0; lane < reduction_lanes; ++lane)
            lanes[lane] = combine(a[i + lane], lanes[lane]);
    return combine_lanes(lanes, a + i, n - i, combine);
}

float sum(const float* a, std::size_t n) {
    return reduce(a, n, 0.0F, added);
}

float largest(const float* a, std::size_t n) {
    return reduce(a, n, -std::numeric_limits<float>::infinity(), larger_one);
}

float smallest(const float* a, std::size_t n) {
    return reduce(a, n, std::numeric_limits<float>::infinity(), smaller_one);
}

} // namespace

constexpr arithmetic_kernels scalar_arithmetic_kernels = {
    set,
    add,
    add_constant,
    subtract,
    multiply,
    multiply_constant,
    divide,
    divide_by_constant,
    divide_constant,
    absolute,
    square,
    square_root,
    larger,
    add_and_scale,
    scale_and_add_twice,
    sum,
    largest,
    smallest,
};

arithmetic_kernels active_arithmetic_kernels = scalar_arithmetic_kernels;
