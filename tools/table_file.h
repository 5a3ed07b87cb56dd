/// Writing tables of floats as data sets hold them.
#pragma once

#include "unfinished_file.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <vector>

/// A file of raw little-endian 32-bit floats that appears whole or not at all.
class table_file {
public:
    /// Throws std::runtime_error, naming the file, when it can't be written, as all members do.
    explicit table_file(const std::filesystem::path& file);

    void append(const float* values, std::size_t count);

    /// Puts the file in its place, instead of an older one.
    void finish();

private:
    unfinished_file file_;
    std::ofstream out_;
};

/// Writes a whole table_file.
void write_table_file(const std::filesystem::path& file, const std::vector<float>& values);
