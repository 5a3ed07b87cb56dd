#pragma once

// Between the sample types and layouts of the host and the engine's planar 32-bit float blocks of full
// scale 1.0.
//
// The rules of vector_primitives.h hold: null pointers and counts of zero or less do nothing, no alignment is
// needed, nothing allocates. Source and destination must not overlap, except in the `_values` functions,
// which work in place.
//
// The two roads of 16-bit samples differ on purpose. An interleaved stereo stream is scaled by 3.0518e-5,
// which is not 1/32768, on the way in and truncated on the way out; a mono or planar stream is scaled by
// exactly 1/32768 and rounded. On both roads out a value beyond full scale saturates, as infinities do, and a
// NaN becomes 0.

/// Interleaved stereo to planar: `n` frames of left and right in turn become `n` left, then `n` right
/// samples. Shorts are multiplied by 3.0518e-5, doubles rounded to float.
void qnl_deinterleave(const short* a, float* d, int n);
void qnl_deinterleave(const float* a, float* d, int n);
void qnl_deinterleave(const double* a, float* d, int n);

/// Planar stereo of `n` frames to interleaved. Shorts are the value times 32768 truncated toward zero,
/// held to -32768..32767.
void qnl_interleave(const float* a, short* d, int n);
void qnl_interleave(const float* a, float* d, int n);
void qnl_interleave(const float* a, double* d, int n);

/// Sample by sample, `n` samples. From short: times 1/32768, exactly. To short: times 32768, rounded to the
/// nearest with ties to even, held to -32768..32767. From double: rounded to float.
void qnl_convert(const short* a, float* d, int n);
void qnl_convert(const float* a, short* d, int n);
void qnl_convert(const float* a, double* d, int n);
void qnl_convert(const double* a, float* d, int n);

/// In place between full scale 1.0 and 16-bit scale: times 32768, and times 3.0518e-5.
void expand_float_to_short_values(float* x, int n);
void compress_float_to_short_values(float* x, int n);

/// channels[c] = block + c * frames, for `number_channels` channels. Nothing is copied.
void convert_block_to_pointer(float* block, float** channels, int frames, int number_channels);

/// Copies `frames` samples of each channel to block + c * frames. A null channel leaves its stretch
/// untouched.
void convert_pointer_to_block(const float* const* channels, float* block, int frames, int number_channels);
