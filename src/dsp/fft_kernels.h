#pragma once

#include "dsp/fft_plan.h"

/// How many bins of a real transform turn by an eighth of the circle at most, in whole vectors of 8.
constexpr int gentle_bins(int half) {
    return half / 4 / 8 * 8;
}

/// The inner loops of the transforms, one table of them per instruction set.
struct fft_kernels {
    /// `out` becomes the transform of the plan's `size` values of `in`, the inverse one scaled by 1 / size.
    /// `in` may be `out`. `work` holds two values for each.
    void (*transform)(const fft_plan& plan, const complex32f* in, complex32f* out, complex32f* work,
                      bool inverse);

    /// Makes the 2 half bins of the spectrum of 2 half real samples out of `packed`, the transform of the
    /// samples taken as `half` complex values. `half` is at least 2 and even. `factors` holds 1 - the cosine
    /// and the sine of the angle pi k / half for k from 1 to gentle_bins(), and from there to half / 2 those
    /// of what the angle lacks to a quarter of the circle.
    void (*expand_real)(const complex32f* packed, const complex32f* factors, complex32f* out, int half);

    /// The way back: of any 2 half bins it makes the `half` values whose inverse transform holds, taken as
    /// floats, the real parts of the bins' inverse transform. Same `factors`.
    void (*pack_real)(const complex32f* bins, const complex32f* factors, complex32f* packed, int half);
};

extern const fft_kernels scalar_fft_kernels;
extern fft_kernels active_fft_kernels __attribute__((visibility("hidden"))); ///< scalar at first
