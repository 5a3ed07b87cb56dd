/// Pages of the project that hold what tests check.
#pragma once

#include <string>
#include <vector>

namespace test_kit {

/// Each match of `pattern` in a page, as the texts of its groups; group 0 is the whole match.
/// @param page  a path from the root of the project
std::vector<std::vector<std::string>> rows_of(const std::string& page, const std::string& pattern);

} // namespace test_kit
