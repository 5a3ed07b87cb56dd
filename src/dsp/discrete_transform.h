#pragma once

#include "dsp/fft_plan.h"
#include "dsp/vector_primitives.h"

// Discrete Fourier transforms of one fixed length N in single precision: forward unscaled, the inverse
// divided by N. Tables and work space are made by the constructors; after that nothing allocates. An object
// serves one thread at a time.

/// The transform of complex values.
class complex_transform {
public:
    /// @param size  N, from 1 up, a product of powers of 2, 3 and 5; quick when it is a multiple of 32
    explicit complex_transform(int size);

    /// out[k] = sum over m of in[m] e^(-j 2 pi k m / N), for N values. `in` may be `out`.
    void forward(const complex32f* in, complex32f* out);
    /// out[m] = sum over k of in[k] e^(+j 2 pi k m / N), divided by N. `in` may be `out`.
    void inverse(const complex32f* in, complex32f* out);

private:
    fft_plan plan_;
    qnl_buffer_32fc work_;
};

/// The transform of real samples, by a complex one of half the length.
class real_transform {
public:
    /// @param size  N, a multiple of 4 that is a product of powers of 2, 3 and 5
    explicit real_transform(int size);

    /// Makes all N bins out of N samples. Bins 0 and N/2 have a zero imaginary part, and bin N - k is the
    /// conjugate of bin k to the bit. The arrays must not overlap.
    void forward(const float* in, complex32f* out);
    /// The real parts of the inverse transform of any N bins, divided by N. The arrays must not overlap.
    void inverse(const complex32f* in, float* out);

private:
    int size_;
    complex_transform half_;
    qnl_buffer_32fc factors_;
    qnl_buffer_32fc packed_;
};
