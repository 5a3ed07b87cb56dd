/// Files that a test needs for its own duration.
#pragma once

#include <string>
#include <string_view>

namespace test_kit {

/// A fresh directory of its own, removed with all that is in it at the end.
class temporary_directory {
public:
    temporary_directory();
    ~temporary_directory();
    temporary_directory(const temporary_directory&) = delete;
    temporary_directory& operator=(const temporary_directory&) = delete;

    const std::string& path() const { return path_; }

    /// The path that a file of this name has or would have.
    std::string path_of(std::string_view name) const;

    /// Writes a file, replacing an older one. @param bytes  any bytes  @return its path
    std::string write(std::string_view name, std::string_view bytes) const;

private:
    std::string path_;
};

} // namespace test_kit
