#pragma once

#include "cancellation.h"
#include "spherical_head.h"

#include <iosfwd>
#include <string>
#include <vector>

/// A head on which the filters are tried.
struct listener {
    std::string name;
    spherical_head head;
};

/// The channel separation that some rows of the table achieve on these listeners, by octave band, and the
/// largest boost.
void print_report(std::ostream& out, const std::vector<filter_row>& table,
                  const std::vector<listener>& listeners);

/// The separation over frequency as a drawing in SVG, one panel for each listener.
void draw_separation(std::ostream& out, const std::vector<filter_row>& table,
                     const std::vector<listener>& listeners);
