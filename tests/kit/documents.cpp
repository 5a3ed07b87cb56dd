#include "kit/documents.h"

#include <fstream>
#include <iterator>
#include <regex>

namespace test_kit {

std::vector<std::vector<std::string>> rows_of(const std::string& page, const std::string& pattern) {
    std::ifstream file(QUENLIS_SOURCE_DIR "/" + page);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::regex expression(pattern);
    std::vector<std::vector<std::string>> rows;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match)
        rows.emplace_back(match->begin(), match->end());
    return rows;
}

} // namespace test_kit
