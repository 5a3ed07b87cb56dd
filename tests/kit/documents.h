/// Pages of the project that hold what tests check.
#pragma once

#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

namespace test_kit {

/// Each match of `pattern` in a page, as the texts of its groups; group 0 is the whole match.
/// @param page  a path from the root of the project
inline std::vector<std::vector<std::string>> rows_of(const std::string& page, const std::string& pattern) {
    std::ifstream file(QUENLIS_SOURCE_DIR "/" + page);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::regex expression(pattern);
    std::vector<std::vector<std::string>> rows;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match)
        rows.emplace_back(match->begin(), match->end());
    return rows;
}

} // namespace test_kit
