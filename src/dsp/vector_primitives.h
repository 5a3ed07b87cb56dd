#pragma once

#include <memory>

// The block arithmetic of the engine: free functions over arrays of 32-bit floats, complex values and shorts.
//
// What holds for every function here unless its line says otherwise:
//  - `n` counts elements (a complex value is one element). A null pointer, or `n` of zero or less, does
//    nothing.
//  - Pointers need no alignment. Nothing in front of or behind the `n` elements is read or written.
//  - The destination may be the very same array as a source; otherwise arrays must not overlap.
//  - Nothing allocates, locks, logs or keeps state, so any thread may call at any time.
//  - The result has the same bits on every instruction set. Infinities, NaN and zero go the way of IEEE
//    arithmetic or, for mathematical functions, the way of the C library.
//
// In the names `_I` means in place, `C` a constant operand, `32f`, `16s` and `32fc` the element type.

/// One complex value: real part, then imaginary part, without padding.
struct complex32f {
    float re;
    float im;
};
static_assert(sizeof(complex32f) == 2 * sizeof(float), "arrays of complex32f double as arrays of floats");

/// Picks the best instruction set of this processor for the whole process. Before the first call everything
/// works with plain scalar code, with the same results. Not to be called from two threads at once, nor while
/// another thread uses the layer: the caller guards it. Calling it again changes nothing.
void qnl_start_vector_layer();

// ---- Allocation ---------------------------------------------------------------------------------------

/// Storage for `n` elements, aligned to 64 bytes, not cleared; to be given back with qnl_free.
/// Null when `n` is zero or negative, when the size in bytes would pass 2147483647, and when the heap is
/// exhausted.
float* qnl_malloc_32f(int n);
short* qnl_malloc_16s(int n);
complex32f* qnl_malloc_32fc(int n);

/// Gives back what one of the three functions above returned, and nothing else. Null is ignored.
void qnl_free(void* p);

struct qnl_deleter {
    void operator()(void* p) const noexcept { qnl_free(p); }
};

/// Owners of such storage. They can be moved, not copied, and give the storage back when they go.
using qnl_buffer_32f = std::unique_ptr<float[], qnl_deleter>;
using qnl_buffer_16s = std::unique_ptr<short[], qnl_deleter>;
using qnl_buffer_32fc = std::unique_ptr<complex32f[], qnl_deleter>;

/// An owner of `n` elements set to zero; an empty owner when `n` is zero or negative.
/// Throws std::bad_alloc when the storage can't be had.
qnl_buffer_32f qnl_make_buffer_32f(int n);
qnl_buffer_16s qnl_make_buffer_16s(int n);
qnl_buffer_32fc qnl_make_buffer_32fc(int n);

// ---- Setting and moving -------------------------------------------------------------------------------

void qnl_set(float* x, float c, int n); ///< x[i] = c
void qnl_set(complex32f* x, complex32f c, int n);

void qnl_zero(float* x, int n); ///< x[i] = 0
void qnl_zero(complex32f* x, int n);
void qnl_zero(short* x, int n);
void qnl_zero(double* x, int n);

void qnl_copy(const float* a, float* d, int n); ///< d[i] = a[i]
void qnl_copy(const short* a, short* d, int n);

void qnl_move(const float* a, float* d, int n); ///< d[i] = a[i]; the arrays may overlap in any way
void qnl_move(const complex32f* a, complex32f* d, int n);

/// Moves the elements from index `shift` on down to index 0 and zeroes the last `shift` of the `n` elements.
/// A `shift` of zero or less changes nothing, one of `n` or more zeroes everything.
void qnl_shift_and_clear(float* x, int shift, int n);
void qnl_shift_and_clear(complex32f* x, int shift, int n);

// ---- Arithmetic ---------------------------------------------------------------------------------------

void qnl_add(const float* a, const float* b, float* d, int n); ///< d[i] = a[i] + b[i]
void qnl_add(const complex32f* a, const complex32f* b, complex32f* d, int n);
void qnl_add_I(const float* a, float* x, int n); ///< x[i] += a[i]
void qnl_add_I(const complex32f* a, complex32f* x, int n);
void qnl_addC_I(float* x, float c, int n); ///< x[i] += c

/// d[i] = b[i] - a[i]: the first operand is the one taken away.
void qnl_subtract(const float* a, const float* b, float* d, int n);
void qnl_subtract(const complex32f* a, const complex32f* b, complex32f* d, int n);
void qnl_subtract_I(const float* a, float* x, int n); ///< x[i] -= a[i]
void qnl_subtract_I(const complex32f* a, complex32f* x, int n);
void qnl_subtractC(const float* a, float* d, float c, int n); ///< d[i] = a[i] - c
void qnl_subtractC_I(float* x, float c, int n);               ///< x[i] -= c

/// d[i] = a[i] * b[i]. Complex: (ar br - ai bi) + j (ar bi + ai br), each product and sum rounded to float.
void qnl_multiply(const float* a, const float* b, float* d, int n);
void qnl_multiply(const complex32f* a, const complex32f* b, complex32f* d, int n);
void qnl_multiply_I(const float* a, float* x, int n); ///< x[i] *= a[i]
void qnl_multiply_I(const complex32f* a, complex32f* x, int n);
void qnl_multiplyC(const float* a, float* d, float c, int n); ///< d[i] = a[i] * c
void qnl_multiplyC(const complex32f* a, complex32f* d, complex32f c, int n);
void qnl_multiplyC_I(float* x, float c, int n); ///< x[i] *= c
void qnl_multiplyC_I(complex32f* x, complex32f c, int n);

/// d[i] = b[i] / a[i]: the first operand is the divisor. A zero divisor gives its IEEE result.
/// A complex quotient is worked out in double precision as b times the conjugate of a over |a| squared, so it
/// overflows or vanishes only where a float can't hold the result.
void qnl_divide(const float* a, const float* b, float* d, int n);
void qnl_divide(const complex32f* a, const complex32f* b, complex32f* d, int n);
void qnl_divide_I(const complex32f* a, complex32f* x, int n); ///< x[i] /= a[i]

/// d[i] = a[i] / c. A zero `c` leaves the destination untouched.
void qnl_divideC(const float* a, float* d, float c, int n);
void qnl_divideC(const complex32f* a, complex32f* d, complex32f c, int n);
void qnl_divideC_I(float* x, float c, int n); ///< x[i] /= c, in the same way
void qnl_divideC_I(complex32f* x, complex32f c, int n);
void qnl_divideReverseC(const float* a, float* d, float c, int n); ///< d[i] = c / a[i]

void qnl_abs(const float* a, float* d, int n); ///< d[i] = |a[i]|
void qnl_sqr(const float* a, float* d, int n); ///< d[i] = a[i] * a[i]
void qnl_sqr_I(float* x, int n);
void qnl_sqrt_I(float* x, int n); ///< correctly rounded; NaN for a negative value

/// d[i] = a[i] when a[i] > b[i], else b[i]; so where either is NaN, b[i].
void qnl_max_every(const float* a, const float* b, float* d, int n);

// ---- Mathematical functions ---------------------------------------------------------------------------

void qnl_sigmoid(const float* a, float* d, int n); ///< 1 / (1 + expf(-a)), to the bit
void qnl_tanh(const float* a, float* d, int n);    ///< within 1e-6 relative; odd; magnitude never above 1
void qnl_log10(const float* a, float* d, int n); ///< within 1e-6; zero gives -infinity, a negative value NaN
void qnl_log10_I(float* x, int n);

/// d[i] = a[i] raised to b[i], within 1e-6 relative; a[i] to the power 0 is exactly 1.
void qnl_pow(const float* a, const float* b, float* d, int n);

/// d[i] = c raised to a[i], element by element with the C library's powf.
void qnl_constant_to_power(const float* a, float* d, float c, int n);
void qnl_constant_to_power_I(float* x, float c, int n);

// ---- Complex values and their parts -------------------------------------------------------------------

void qnl_real_to_complex(const float* re, const float* im, complex32f* d, int n);
void qnl_complex_to_real(const complex32f* a, float* re, float* im, int n);
void qnl_get_real_part(const complex32f* a, float* d, int n);
void qnl_get_imag_part(const complex32f* a, float* d, int n);

/// d[i] = square root of (re * re + im * im), in single precision throughout.
void qnl_magnitude(const complex32f* a, float* d, int n);
void qnl_magnitude(const float* re, const float* im, float* d, int n);

/// d[i] = angle of a[i] in radians from -pi to pi, as atan2f(im, re), to single precision.
void qnl_phase(const complex32f* a, float* d, int n);

/// d[i] = mag[i] cos(phase[i]) + j mag[i] sin(phase[i]), `phase` in radians, to single precision for phases
/// of any size. An infinite phase gives NaN.
void qnl_polar_to_cart(const float* mag, const float* phase, complex32f* d, int n);

// ---- Reductions ---------------------------------------------------------------------------------------
// They return 0 for a null pointer or an `n` of zero or less.

float qnl_mean(const float* a, int n); ///< arithmetic mean, summed in single precision, order fixed
float qnl_max(const float* a, int n);  ///< largest value; NaN is passed over, only NaN gives -infinity
float qnl_min(const float* a, int n);  ///< smallest value; NaN is passed over, only NaN gives +infinity

// ---- Decibels -----------------------------------------------------------------------------------------
// No floor is applied and no epsilon added: zero gives -infinity.

void qnl_mag_dB(const complex32f* a, float* d, int n);  ///< d[i] = 20 log10 of the magnitude of a[i]
void qnl_mag_dB(const float* a, float* d, int n);       ///< d[i] = 20 log10 |a[i]|
void qnl_linear_to_dB(const float* a, float* d, int n); ///< d[i] = 20 log10 a[i]; NaN for a negative value
void qnl_linear_to_power_dB_I(float* x, int n);         ///< x[i] = 10 log10 x[i]
void qnl_dB_to_linear(const float* a, float* d, int n); ///< d[i] = 10 to the power (a[i] / 20)
void qnl_dB_to_linear_I(float* x, int n);
void qnl_power_dB_to_linear_I(float* x, int n); ///< x[i] = 10 to the power (x[i] / 10)

/// d[i] = 10 log10((re squared + im squared) / n squared) for the `n` bins of a transform. The reciprocal of
/// n squared is taken once, as a float; for `n` above 46340 the integer product wraps to 32 bits.
void qnl_power_spectrum_dB(const complex32f* a, float* d, int n);

// ---- Windows and planar stereo ------------------------------------------------------------------------

/// Multiplies by the symmetric Hann window 0.5 - 0.5 cos(2 pi k / (n - 1)), whose ends are exactly 0.
/// A count below 3 leaves `x` unchanged.
void qnl_hann_window_I(float* x, int n);

/// Folds a planar stereo buffer of `2 n` floats: x[i] = (x[i] + x[n + i]) * gain. The right half stays as it
/// is.
void convert_stereo_to_mono(float* x, float gain, int n);

/// Scales a mono block in place and adds it to both sides of a stereo sum, in one walk: x[i] *= gain, then
/// left[i] += x[i] and right[i] += x[i]. The three arrays must not overlap.
void qnl_mix_to_both_sides_I(float* x, float gain, float* left, float* right, int n);

// ---- Scalars ------------------------------------------------------------------------------------------

float lin2dB(float x); ///< 20 log10 x, by way of the natural logarithm
float dB2lin(float x); ///< 10 to the power (x / 20), by way of the natural exponential

/// The larger, the smaller of two floats; `b` when either is NaN.
float max_float(float a, float b);
float min_float(float a, float b);

/// 1 when `n` is not zero and has exactly one bit set, else 0.
int check_power_of_2(int n);

/// The power of two at or above `n`, by logarithms in double precision, which takes some large powers for a little more
/// and gives the next one. 0 for an `n` of zero or less,
/// 2147483647 for one above 2 to the power 30.
int next_power_of_2(int n);

/// 1 when `input_rate * output_frames`, wrapped to 32 bits, is a multiple of `output_rate`, else 0.
/// An `output_rate` of 0 has no multiples.
int check_valid_sampling_rate(int input_rate, int output_rate, int output_frames);
