#pragma once

constexpr float to_short_scale = 32768.0F;
constexpr float lowest_short = -32768.0F;
constexpr float highest_short = 32767.0F;

/// Of mono and planar streams.
constexpr float from_short_exact = 1.0F / 32768.0F;

/// Of interleaved stereo streams: not quite 1/32768, wanted so.
constexpr float from_short_stereo = 3.0518e-5F;

/// 1.5 times 2 to the power 23: adding it to a float of short range and taking it away again rounds to the
/// nearest whole number, ties to even.
constexpr float rounding_shift = 12582912.0F;
