#pragma once

constexpr int crosstalk_rows = 90;
constexpr int crosstalk_taps = 2048;

/// The filters of the crosstalk cancellation, one row for each half-span angle in whole degrees: impulse responses at
/// 48 kHz with their main energy near tap 980. Constant data of data/crosstalk/, 64-byte aligned, shared by all instances.
/// Named by their road, such as `ltor`: from the left input to the right output.
extern "C" {
extern const float ltol_speaker_irs[crosstalk_rows][crosstalk_taps];
extern const float ltor_speaker_irs[crosstalk_rows][crosstalk_taps];
extern const float rtol_speaker_irs[crosstalk_rows][crosstalk_taps];
extern const float rtor_speaker_irs[crosstalk_rows][crosstalk_taps];
}
