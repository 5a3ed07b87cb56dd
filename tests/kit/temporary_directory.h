/// Files that a test needs for its own duration.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace test_kit {

/// A fresh directory of its own, removed with all that is in it at the end.
class temporary_directory {
public:
    temporary_directory() {
        if (mkdtemp(path_.data()) == nullptr)
            throw std::runtime_error("cannot make a temporary directory like " + path_);
    }
    ~temporary_directory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    temporary_directory(const temporary_directory&) = delete;
    temporary_directory& operator=(const temporary_directory&) = delete;

    const std::string& path() const { return path_; }

    /// The path that a file of this name has or would have.
    std::string path_of(std::string_view name) const { return path_ + '/' + std::string(name); }

    /// Writes a file, replacing an older one. @param bytes  any bytes  @return its path
    std::string write(std::string_view name, std::string_view bytes) const {
        std::string path = path_of(name);
        if (!(std::ofstream(path, std::ios::binary) << bytes << std::flush))
            throw std::runtime_error("cannot write " + path);
        return path;
    }

private:
    std::string path_ = (std::filesystem::temp_directory_path() / "quenlis-XXXXXX").string();
};

} // namespace test_kit
