/// The constant tables of the automatic equaliser.
#pragma once

constexpr int auto_eq_bins = 1024;

extern "C" {
/// The long-term speech spectrum in dB at the bins of a 2048-point transform at 48 kHz, on the scale of
/// qnl_power_spectrum_dB with n of 1024.
extern const float target_values[auto_eq_bins];
}
