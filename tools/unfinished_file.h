/// Files that appear whole or not at all.
#pragma once

#include <filesystem>
#include <stdexcept>

/// The place where a file is written before it takes its own: without finish() it is removed. Makes the folder where it
/// is missing.
class unfinished_file {
public:
    /// Throws std::filesystem::filesystem_error without the folder, as finish() does without the file.
    explicit unfinished_file(const std::filesystem::path& file)
        : file_(std::filesystem::absolute(file)), path_(file_) {
        path_ += ".unfinished";
        std::filesystem::create_directories(file_.parent_path());
    }
    ~unfinished_file() {
        std::error_code gone;
        std::filesystem::remove(path_, gone);
    }
    unfinished_file(const unfinished_file&) = delete;
    unfinished_file& operator=(const unfinished_file&) = delete;

    /// Where to write, on the same file system.
    const std::filesystem::path& path() const { return path_; }

    /// Puts the file, which has been closed, in its place, instead of an older one.
    void finish() const { std::filesystem::rename(path_, file_); }

    [[noreturn]] void fail() const { throw std::runtime_error("cannot write " + file_.string()); }

private:
    std::filesystem::path file_;
    std::filesystem::path path_;
};
