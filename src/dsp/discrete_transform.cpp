#include "dsp/discrete_transform.h"

#include <complex>
#include <cstddef>
#include <vector>

#include "dsp/fft_kernels.h"
#include "dsp/vector_kernels.h"

complex_transform::complex_transform(int size) : plan_(size), work_(qnl_make_buffer_32fc(2 * size)) {}

void complex_transform::forward(const complex32f* in, complex32f* out) {
    active_fft_kernels.transform(plan_, in, out, work_.get(), false);
}

void complex_transform::inverse(const complex32f* in, complex32f* out) {
    active_fft_kernels.transform(plan_, in, out, work_.get(), true);
}

real_transform::real_transform(int size)
    : size_(size),
      half_(size / 2),
      factors_(qnl_make_buffer_32fc(size / 4)),
      packed_(qnl_make_buffer_32fc(size / 2)) {
    const std::vector<std::complex<double>> roots = unit_roots(size);
    for (int k = 1; k <= size / 4; ++k) {
        const std::complex<double> root =
            roots[static_cast<std::size_t>(k <= gentle_bins(size / 2) ? k : size / 4 - k)];
        factors_[static_cast<std::size_t>(k - 1)] = {static_cast<float>(1.0 - root.real()),
                                                     static_cast<float>(root.imag())};
    }
}

void real_transform::forward(const float* in, complex32f* out) {
    half_.forward(reinterpret_cast<const complex32f*>(in), packed_.get());
    active_fft_kernels.expand_real(packed_.get(), factors_.get(), out, size_ / 2);
}

void real_transform::inverse(const complex32f* in, float* out) {
    active_fft_kernels.pack_real(in, factors_.get(), packed_.get(), size_ / 2);
    half_.inverse(packed_.get(), reinterpret_cast<complex32f*>(out));
}
