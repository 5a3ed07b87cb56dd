#pragma once

#include "dsp/discrete_transform.h"
#include "dsp/vector_primitives.h"

/// The discrete Fourier transform of real samples, of one length N, with all that it needs, for effects:
/// samples in, all N bins out, and back. Forward it is unscaled, the inverse carries 1 / N.
///
/// Forward transforms read a holding buffer of N samples, zero after construction and after flush(). Each
/// call replaces only as many as it is given: the rest are what an earlier, longer call left there. So either
/// all calls give the same number, and every transform is zero-padded, or the caller flushes in between.
///
/// One thread at a time. Nothing allocates after construction.
class quenlis_FFT {
public:
    /// @param size  N, a power of two from 4 up; any other number runs the transform of the next smaller one
    /// @param real  the use that is meant: true for RFFT only, false for FFT, IFFT and IFFT_no_save only
    quenlis_FFT(int size, bool real);

    /// Takes over `in_len` samples, from 0 to N, and transforms all N held ones. Bins 0 and N/2 have a zero
    /// imaginary part, and bin N - k is the conjugate of bin k to the bit.
    /// @param n  N, the number of bins written to `out`
    void FFT(const float* in, int in_len, complex32f* out, int n);

    /// Adds the real parts of the first `n` values of the inverse transform to `out`; imaginary parts are
    /// dropped.
    /// @param in  N bins
    void IFFT(const complex32f* in, float* out, int n);

    /// As IFFT, but replaces what `out` held.
    void IFFT_no_save(const complex32f* in, float* out, int n);

    /// As FFT, for an object of real use.
    void RFFT(const float* in, int in_len, complex32f* out, int n);

    /// Does nothing, on purpose.
    void IRFFT(const complex32f* in, int in_len, float* out, int n);

    /// Zeroes the held samples.
    void flush();

private:
    real_transform transform_; // for both uses: samples are real on their side of every operation
    qnl_buffer_32f held_;
    qnl_buffer_32f real_scratch_;
    qnl_buffer_32f spare_; // kept on purpose, used by nothing
    int size_;
};
