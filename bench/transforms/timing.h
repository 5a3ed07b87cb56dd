#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

#include <benchmark/benchmark.h>

/// Nanoseconds that one of `calls` calls takes.
template <class Work>
double nanoseconds(Work work, int calls) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i) {
        work();
        benchmark::ClobberMemory();
    }
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() / calls;
}

inline double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}
