/// Frames, spectra and bands of the recurrent denoiser.
#pragma once

#include "dsp/vector_primitives.h"

namespace denoiser_spectrum {

constexpr int frame_size = 480;
constexpr int window_size = 960;
constexpr int bins = 481; // 50 Hz each
constexpr int bands = 22;

/// Edges of the bands, in units of 4 bins. Bands overlap as triangles from one edge to the next but one.
extern const short eband5ms[bands];

/// A forward transform of complex values that carries the factor 1 / size.
struct opus_fft_state;
/// Allocates the tables. @param size  a product of powers of 2, 3 and 5
opus_fft_state* opus_fft_alloc_twiddles(int size);
/// `out` may be `in`. Never allocates.
void opus_fft_c(opus_fft_state* plan, const complex32f* in, complex32f* out);
void opus_fft_free(opus_fft_state* plan);

/// The rising half of the power-complementary window, and the basis of the cosine transform over bands.
void fill_half_window(float* half_window);
void fill_dct_table(float* dct_table);

/// Windows 960 samples in place.
void apply_window(float* x, const float* half_window);

/// The first 481 bins of 960 real samples, scaled by 1/960.
void forward_transform(opus_fft_state* plan, const float* x, complex32f* spectrum);
/// The 960 real samples of a spectrum of 481 bins, with the factor of forward_transform undone.
void inverse_transform(opus_fft_state* plan, const complex32f* spectrum, float* x);

/// Energy of each band.
void compute_band_energy(const complex32f* x, float* energy);
/// Real part of the correlation of two spectra in each band.
void compute_band_corr(const complex32f* x, const complex32f* p, float* correlation);

/// Spreads a value per band over the bins; bins from 400 upward stay as they are, on purpose.
void interp_band_gain(float* gain, const float* band);

/// out[i] = sqrt(2/22) * sum over j of in[j] * dct_table[j * 22 + i].
void dct(float* out, const float* in, const float* dct_table);

} // namespace denoiser_spectrum
