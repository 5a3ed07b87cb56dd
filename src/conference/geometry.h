/// Pure arithmetic of places: headings, and one place as heard from another. All in 32-bit floats, with
/// angles cut towards zero to whole degrees. Defined for every place; never allocates.
#pragma once

#include "quenlis.h"

#include <cstdint>

/// A place as heard from another.
struct spherical_position {
    int32_t azimuth;   ///< degrees, positive to the right
    int32_t elevation; ///< degrees
    int32_t distance;  ///< in the unit of the positions, cut towards zero
};

/// The heading of somebody at `position` who looks at `centre`.
qnl_heading heading_towards(qnl_position position, qnl_position centre);

/// Where a listener, turned by its heading, hears a source.
/// The elevation rests on height over sideways distance alone, and is an angle only for sources at the side.
spherical_position cartesian_to_spherical(const qnl_seat& source, const qnl_seat& listener);
