#include "table_file.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>

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
    : file_(std::filesystem::absolute(file)), unfinished_(file_) {
    unfinished_ += ".unfinished";
    std::filesystem::create_directories(file_.parent_path());
    out_.open(unfinished_, std::ios::binary);
    if (!out_)
        throw std::runtime_error("cannot write " + unfinished_.string());
}

table_file::~table_file() {
    std::error_code gone;
    std::filesystem::remove(unfinished_, gone);
}

void table_file::append(const float* values, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        write_little_endian(out_, values[i]);
    if (!out_)
        throw std::runtime_error("cannot write " + file_.string());
}

void table_file::finish() {
    out_.close();
    if (!out_)
        throw std::runtime_error("cannot write " + file_.string());
    std::filesystem::rename(unfinished_, file_);
}

void write_table_file(const std::filesystem::path& file, const std::vector<float>& values) {
    table_file out(file);
    out.append(values.data(), values.size());
    out.finish();
}
