#include "dsp/fft_plan.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

/// In ascending order but for the first, which is the largest too: the vector kernels begin with a pass of
/// radix 8, and the last pass rotates nothing, which pays most where it is large. A power of two takes one
/// 4 or two rather than a 2, whose pass moves as much and does less.
std::vector<int> radices_of(int size) {
    std::vector<int> radices;
    for (const int odd : {3, 5})
        for (; size % odd == 0; size /= odd)
            radices.push_back(odd);
    for (; size > 1; size /= radices.back())
        radices.push_back(size == 2 ? 2 : size == 8 || size % 64 == 0 || size == 32 ? 8 : 4);
    std::sort(radices.begin(), radices.end());
    if (!radices.empty())
        std::rotate(radices.begin(), radices.end() - 1, radices.end());
    return radices;
}

std::vector<fft_pass> passes_of(int size) {
    std::vector<fft_pass> passes;
    int run = 1;
    for (const int radix : radices_of(size)) {
        passes.push_back({radix, run, size / run / radix, nullptr});
        run *= radix;
    }
    return passes;
}

/// Floats that the factors of a pass take.
int rotation_count(const fft_pass& pass) {
    return 2 * (pass.radix - 1) * pass.groups;
}

void fill_rotations(const fft_pass& pass, const std::vector<complex32f>& roots, float* rotations) {
    const int outputs = pass.radix - 1;
    for (int group = 0; group < pass.groups; ++group)
        for (int output = 0; output < outputs; ++output) {
            const int turn = (output + 1) * group * pass.run;
            const complex32f root = roots[static_cast<std::size_t>(turn)];
            const bool first = pass.run == 1;
            const int at = first ? 2 * output * pass.groups + place_of_group(pass, group)
                                 : 2 * (outputs * group + output);
            rotations[at] = root.re;
            rotations[at + (first ? pass.groups : 1)] = root.im;
        }
}

complex32f unit_root(int k, int size) {
    const double angle = 2.0 * 3.14159265358979323846 * k / size;
    return {static_cast<float>(std::cos(angle)), static_cast<float>(-std::sin(angle))};
}

} // namespace

fft_plan::fft_plan(int size) : size_(size), passes_(passes_of(size)) {
    int count = 0;
    for (const fft_pass& pass : passes_)
        count += rotation_count(pass);
    rotations_ = qnl_make_buffer_32f(count);
    const std::vector<complex32f> roots = unit_roots(size);
    float* next = rotations_.get();
    for (fft_pass& pass : passes_) {
        fill_rotations(pass, roots, next);
        pass.rotations = next;
        next += rotation_count(pass);
    }
}

int place_of_group(const fft_pass& pass, int group) {
    return pass.groups % 8 == 0 ? (group & ~7) + 2 * (group & 3) + (group & 4) / 4 : group;
}

// An eighth of the circle by sine and cosine, the rest by mirroring and turning: quick, and exactly
// symmetric.
std::vector<complex32f> unit_roots(int size) {
    std::vector<complex32f> roots(static_cast<std::size_t>(size));
    const auto at = [&roots](int k) -> complex32f& { return roots[static_cast<std::size_t>(k)]; };
    const int quarter = size / 4;
    const int computed = size % 8 == 0 ? size / 8 : size - 1;
    for (int k = 0; k <= computed; ++k)
        at(k) = unit_root(k, size);
    for (int k = computed + 1; k < size; ++k)
        at(k) = k <= quarter ? complex32f{-at(quarter - k).im, -at(quarter - k).re}
                             : complex32f{at(k - quarter).im, -at(k - quarter).re};
    return roots;
}
