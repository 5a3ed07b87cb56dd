/// Writing tables of floats as data sets hold them.
#pragma once

#include <filesystem>
#include <vector>

/// Writes the values as raw little-endian 32-bit floats, and makes the folder where it is missing. The file appears
/// whole or not at all. Throws std::runtime_error, naming the file, when it can't be written.
void write_table_file(const std::filesystem::path& file, const std::vector<float>& values);
