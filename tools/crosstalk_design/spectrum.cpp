#include "spectrum.h"

#include <cmath>
#include <cstddef>

namespace {

using complex = std::complex<double>;

constexpr double two_pi = 6.283185307179586476925;

// An unscaled transform of every `stride`-th value; `roots` holds exp(+-2 pi i k / grid_frames).
void transform(const complex* in, complex* out, int length, int stride, const std::vector<complex>& roots) {
    if (length == 1) {
        *out = *in;
        return;
    }
    const int half = length / 2;
    transform(in, out, half, 2 * stride, roots);
    transform(in + stride, out + half, half, 2 * stride, roots);
    for (int k = 0; k < half; k++) {
        const complex even = out[k];
        const complex odd = out[k + half] * roots[static_cast<std::size_t>(k) * stride];
        out[k] = even + odd;
        out[k + half] = even - odd;
    }
}

std::vector<complex> transformed(const std::vector<complex>& in, int direction) {
    std::vector<complex> roots(grid_frames / 2);
    for (int k = 0; k < grid_frames / 2; k++)
        roots[k] = phasor(direction * static_cast<double>(k) / grid_frames);
    std::vector<complex> out(grid_frames);
    transform(in.data(), out.data(), grid_frames, 1, roots);
    return out;
}

} // namespace

complex phasor(double turns) {
    const double x = two_pi * (turns - std::round(turns));
    // Taylor's series for half a turn either way: the last terms are below the rounding of the sum.
    complex sum = 1.0;
    complex term = 1.0;
    for (int n = 1; n <= 32; n++) {
        term *= complex(0.0, x / n);
        sum += term;
    }
    return sum;
}

std::vector<double> to_time(const spectrum& half) {
    std::vector<complex> whole(grid_frames);
    whole[0] = half[0].real();
    whole[grid_frames / 2] = half[grid_frames / 2].real();
    for (int k = 1; k < grid_frames / 2; k++) {
        whole[k] = half[k];
        whole[grid_frames - k] = std::conj(half[k]);
    }
    std::vector<double> response;
    response.reserve(grid_frames);
    for (const complex& value : transformed(whole, +1))
        response.push_back(value.real() / grid_frames);
    return response;
}

spectrum to_frequency(const std::vector<double>& response) {
    std::vector<complex> padded(response.begin(), response.end());
    padded.resize(grid_frames);
    spectrum bins = transformed(padded, -1);
    bins.resize(grid_bins);
    return bins;
}
