#pragma once

/// An angle as a multiple of half pi, of which the last two bits count, and a rest from -pi/4 to pi/4.
struct reduced_angle {
    double rest;
    unsigned quadrant;
};

/// Reduces an angle above 1e6 in size, exactly enough for the float nearest to its sine or cosine. Infinity
/// and NaN give a rest of NaN.
reduced_angle reduce_large_angle(float angle);
