#pragma once

#include "conference.h"

#include <iosfwd>

/// Prints the table of participants with their levels, then where the mixes are and how long it took.
void print_report(std::ostream& out, const conference& held, const run_times& times,
                  const std::string& mixes_directory);
