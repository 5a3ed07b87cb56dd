/// Pitch analysis by correlation, in the float form of the pitch code of an open speech codec (J.-M. Valin, K. Vos and
/// T. Terriberry, RFC 6716). All work arrays are of fixed size, on the stack: nothing allocates.
#pragma once

namespace pitch_analysis {

constexpr int min_period = 60;                           // samples at 48 kHz: 800 Hz
constexpr int max_period = 768;                          // 62.5 Hz
constexpr int longest_lag = max_period - 3 * min_period; // of the search
constexpr int correlation_frame = 960;
constexpr int history = max_period + correlation_frame;
constexpr int half_history = history / 2;
/// Samples behind a half-rate history that may be read; they count for nothing.
constexpr int padding = 32;

/// Linear prediction coefficients of order `order` from `order` + 1 autocorrelation lags, by the recursion
/// of N. Levinson and J. Durbin. Stops early when the error falls below a thousandth of the energy; all zeros for no
/// energy.
void _celt_lpc(float* lpc, const float* autocorrelation, int order);

/// The lags 0 to `lag` (at most 7) of `n` samples. @param x  followed by `padding` readable samples
/// @param autocorrelation  8 values, of which the first `lag` + 1 are meant
void _celt_autocorr(const float* x, float* autocorrelation, int lag, int n);

/// out[i] = sum over j below `len` of x[j] y[i + j], for each lag i below `lags`.
void celt_pitch_xcorr(const float* x, const float* y, float* out, int len, int lags);

/// Halves the rate of `history` samples and flattens their spectrum by linear prediction.
/// @param x_lp  half_history values, then `padding` zeros
void pitch_downsample(const float* x, float* x_lp);

/// The lag of best correlation, in samples at the full rate, from 0 up to `max_pitch`.
/// @param x_lp  the half-rate window, `len` / 2 samples
/// @param y     the half-rate history, (`len` + `max_pitch`) / 2 samples and `padding` behind
int pitch_search(const float* x_lp, const float* y, int len, int max_pitch);

/// Looks for a shorter true period behind a found one.
/// @param x       the half-rate history, half_history samples
/// @param period  in: the period found, in samples at the full rate; out: the best one, from min_period up
/// @return the pitch gain, at most 1
float remove_doubling(const float* x, int maxperiod, int minperiod, int n, int& period, int prev_period,
                      float prev_gain);

} // namespace pitch_analysis
