#pragma once

#include "dsp/vector_primitives.h"

/// The square root of the Hann window of period 1024: with itself, at a hop of 512, it adds up to 1.
qnl_buffer_32f make_centre_window();

/// The bins of a spectrum of the centre separation.
constexpr int centre_bins = 2048;

/// Splits the spectra of two channels, `centre_bins` bins each, into what they have in common and what
/// remains of each: centre is written, left and right lose it. The sum of each residue and the centre is the
/// bin that was.
///
/// The centre of a bin is the point of the segment between the two complex values that is nearest to zero:
///  - left itself where both are equal;
///  - where only the real parts are equal, the smaller of them without an imaginary part, and where only the
///    imaginary ones are, the smaller of them without a real part, even off the segment: wanted;
///  - else the foot of the perpendicular from zero to the line through both, if it is finite and its real
///    part lies between theirs, ends included;
///  - else the one with the smaller magnitude; right when these are equal.
/// Bin 0 is an exception: its centre is the mean of both.
///
/// Never allocates. The three arrays must not overlap.
void separate_left_right_to_center(complex32f* left, complex32f* right, complex32f* centre);
