#include "dsp/fft.h"

#include <cmath>

namespace {

int lower_power_of_two(int size) {
    return 1 << static_cast<int>(std::log2(static_cast<double>(size)));
}

} // namespace

quenlis_FFT::quenlis_FFT(int size, bool /*real*/)
    : transform_(lower_power_of_two(size)),
      held_(qnl_make_buffer_32f(size)),
      real_scratch_(qnl_make_buffer_32f(size + 2)),
      spare_(qnl_make_buffer_32f(size)),
      size_(size) {}

void quenlis_FFT::FFT(const float* in, int in_len, complex32f* out, int /*n*/) {
    qnl_copy(in, held_.get(), in_len);
    transform_.forward(held_.get(), out);
}

void quenlis_FFT::IFFT(const complex32f* in, float* out, int n) {
    transform_.inverse(in, real_scratch_.get());
    qnl_add_I(real_scratch_.get(), out, n);
}

void quenlis_FFT::IFFT_no_save(const complex32f* in, float* out, int n) {
    transform_.inverse(in, real_scratch_.get());
    qnl_copy(real_scratch_.get(), out, n);
}

void quenlis_FFT::RFFT(const float* in, int in_len, complex32f* out, int n) {
    FFT(in, in_len, out, n);
}

void quenlis_FFT::IRFFT(const complex32f* /*in*/, int /*in_len*/, float* /*out*/, int /*n*/) {}

void quenlis_FFT::flush() {
    qnl_zero(held_.get(), size_);
}
