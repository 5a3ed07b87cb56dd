#include "kit/temporary_directory.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace test_kit {

temporary_directory::temporary_directory()
    : path_((std::filesystem::temp_directory_path() / "quenlis-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr)
        throw std::runtime_error("cannot make a temporary directory like " + path_);
}

temporary_directory::~temporary_directory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string temporary_directory::path_of(std::string_view name) const {
    return (std::filesystem::path(path_) / name).string();
}

std::string temporary_directory::write(std::string_view name, std::string_view bytes) const {
    std::string path = path_of(name);
    if (!(std::ofstream(path, std::ios::binary) << bytes << std::flush))
        throw std::runtime_error("cannot write " + path);
    return path;
}

} // namespace test_kit
