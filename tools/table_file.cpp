#include "table_file.h"

#include <cstdint>
#include <cstring>

namespace {

void write_little_endian(std::ostream& out, float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    char bytes[sizeof bits];
    for (char& byte : bytes) {
        byte = static_cast<char>(bits & 0xFFU);
        bits >>= 8U;
    }
    out.write(bytes, sizeof bytes);
}

} // namespace

table_file::table_file(const std::filesystem::path& file)
    : file_(file), out_(file_.path(), std::ios::binary) {
    if (!out_)
        file_.fail();
}

void table_file::append(const float* values, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        write_little_endian(out_, values[i]);
    if (!out_)
        file_.fail();
}

void table_file::finish() {
    out_.close();
    if (!out_)
        file_.fail();
    file_.finish();
}

void write_table_file(const std::filesystem::path& file, const std::vector<float>& values) {
    table_file out(file);
    out.append(values.data(), values.size());
    out.finish();
}
