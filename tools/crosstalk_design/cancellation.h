#pragma once

#include "spectrum.h"
#include "spherical_head.h"

#include <array>

constexpr int table_rows = 90;
constexpr int row_taps = 2048;

/// The filters of one half-span angle. The head is symmetric, so left and right share them.
struct filter_row {
    std::array<float, row_taps> same;  ///< left input to left loudspeaker, right to right
    std::array<float, row_taps> cross; ///< left input to right loudspeaker, right to left
};

/// The filters for loudspeakers whose sound reaches the ears in this way. With them each ear hears its own channel as
/// it would hear the loudspeaker of its side alone, some 977 frames later, and little of the other channel.
filter_row cancel_crosstalk(const ear_responses& ears);
