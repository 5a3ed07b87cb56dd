#include "table_file.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace {

void write_little_endian(std::ostream& out, float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    for (int shift = 0; shift < 32; shift += 8)
        out.put(static_cast<char>(bits >> shift & 0xFFU));
}

} // namespace

void write_table_file(const std::filesystem::path& file, const std::vector<float>& values) {
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::path unfinished = file;
    unfinished += ".unfinished";
    std::ofstream out(unfinished, std::ios::binary);
    for (const float value : values)
        write_little_endian(out, value);
    out.close();
    if (!out)
        throw std::runtime_error("cannot write " + unfinished.string());
    std::filesystem::rename(unfinished, file);
}
