#include "dsp/fft_plan.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

/// In ascending order but for an 8 in front: the vector kernels begin with a pass of radix 8, and the last
/// pass turns nothing, which pays most where it is large. What a power of two leaves beside its 8s takes one
/// pass of 16 rather than two of 4.
std::vector<int> radices_of(int size) {
    std::vector<int> radices;
    for (const int odd : {15, 5, 3})
        for (; size % odd == 0; size /= odd)
            radices.push_back(odd);
    for (; size > 1; size /= radices.back())
        radices.push_back(size == 2 || size == 4 || size == 16 ? size : 8);
    std::sort(radices.begin(), radices.end());
    const auto eight = std::find(radices.begin(), radices.end(), 8);
    if (eight != radices.end())
        std::rotate(radices.begin(), eight, eight + 1);
    return radices;
}

/// Half of the groups, but of the first pass whole vectors of 4.
int groups_ahead(int run, int groups) {
    return run == 1 && groups % 4 == 0 ? (groups / 2 + 3) / 4 * 4 : (groups + 1) / 2;
}

std::vector<fft_pass> passes_of(int size) {
    std::vector<fft_pass> passes;
    int run = 1;
    for (const int radix : radices_of(size)) {
        const int groups = size / run / radix;
        passes.push_back({radix, run, groups, groups_ahead(run, groups), nullptr});
        run *= radix;
    }
    return passes;
}

std::vector<int> order_of(const std::vector<fft_pass>& passes) {
    std::vector<int> order = {0};
    for (std::size_t i = 0; i + 1 < passes.size(); ++i) {
        const int radix = passes[i].radix;
        for (int q = passes[i].run; q < passes[i].run * radix; ++q) {
            const int output = q / passes[i].run;
            const int counted = 2 * output < radix ? output : output - radix;
            order.push_back(order[static_cast<std::size_t>(q % passes[i].run)] + counted * passes[i].run);
        }
    }
    return order;
}

inverse_scale scale_of(int size) {
    const double power = std::exp2(-std::round(std::log2(size)));
    return {static_cast<float>(power), static_cast<float>(1.0 / size - power)};
}

/// Floats that the factors of a pass take.
int rotation_count(const fft_pass& pass) {
    return (pass.run == 1 ? 4 : 2) * (pass.radix / 2) * pass.groups;
}

/// What an output is multiplied by while it turns: half of its parts are that much too small.
double gain_of(const fft_pass& pass, int output) {
    return pass.radix == 8 && output % 2 == 1 ? 2.0 / (1.0 + root_half / 0.70710678118654752440) : 1.0;
}

void fill_rotations(const fft_pass& pass, const std::vector<std::complex<double>>& roots, float* rotations) {
    const auto size = static_cast<int>(roots.size());
    const int outputs = pass.radix / 2;
    for (int group = 0; group < pass.groups; ++group)
        for (int output = 1; output <= outputs; ++output) {
            const int counted = group < pass.ahead ? group : group - pass.groups;
            const int turn = output * counted * pass.run;
            const std::complex<double> root =
                gain_of(pass, output) * roots[static_cast<std::size_t>(turn < 0 ? turn + size : turn)];
            const auto cosine =
                static_cast<float>(turns_little(pass.radix, output) ? 1.0 - root.real() : root.real());
            const auto sine = static_cast<float>(root.imag());
            if (pass.run == 1) {
                float* const first = rotations + 2 * (2 * (output - 1) * pass.groups + group);
                std::fill_n(first, 2, cosine);
                std::fill_n(first + 2 * pass.groups, 2, sine);
            } else {
                float* const first = rotations + 2 * (outputs * group + output - 1);
                first[0] = cosine;
                first[1] = sine;
            }
        }
}

} // namespace

fft_plan::fft_plan(int size)
    : size_(size), passes_(passes_of(size)), order_(order_of(passes_)), scale_(scale_of(size)) {
    int count = 0;
    for (const fft_pass& pass : passes_)
        count += rotation_count(pass);
    rotations_ = qnl_make_buffer_32f(count);
    const std::vector<std::complex<double>> roots = unit_roots(size);
    float* next = rotations_.get();
    for (fft_pass& pass : passes_) {
        fill_rotations(pass, roots, next);
        pass.rotations = next;
        next += rotation_count(pass);
    }
}

// An eighth of the circle by sine and cosine, the rest by mirroring and turning: quick, and exactly
// symmetric.
std::vector<std::complex<double>> unit_roots(int size) {
    std::vector<std::complex<double>> roots(static_cast<std::size_t>(size));
    const auto at = [&roots](int k) -> std::complex<double>& { return roots[static_cast<std::size_t>(k)]; };
    const int quarter = size / 4;
    const int computed = size % 8 == 0 ? size / 8 : size - 1;
    for (int k = 0; k <= computed; ++k)
        at(k) = std::polar(1.0, 2.0 * 3.14159265358979323846 * k / size);
    for (int k = computed + 1; k < size; ++k)
        at(k) = k <= quarter ? std::complex<double>(at(quarter - k).imag(), at(quarter - k).real())
                             : std::complex<double>(-at(k - quarter).imag(), at(k - quarter).real());
    return roots;
}
