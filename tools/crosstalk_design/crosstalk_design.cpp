// Computes the filter tables of the crosstalk cancellation. See --help.
#include "cancellation.h"
#include "spherical_head.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// Cancellation for loudspeakers that coincide does not exist: the narrowest rows share one design.
constexpr int narrowest_angle = 2;

std::vector<filter_row> design_table(const spherical_head& head) {
    std::vector<filter_row> table;
    for (int angle = 0; angle < table_rows; angle++)
        table.push_back(cancel_crosstalk(respond(head, std::max(angle, narrowest_angle))));
    return table;
}

void write_little_endian(std::ostream& out, float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    for (int shift = 0; shift < 32; shift += 8)
        out.put(static_cast<char>(bits >> shift & 0xFFU));
}

using taps_of_row = std::array<float, row_taps> filter_row::*;

void write_table(const std::filesystem::path& file, const std::vector<filter_row>& table, taps_of_row taps) {
    std::ofstream out(file, std::ios::binary);
    for (const filter_row& row : table)
        for (const float tap : row.*taps)
            write_little_endian(out, tap);
    if (!out.flush())
        throw std::runtime_error("cannot write " + file.string());
}

void write_tables(const std::filesystem::path& folder, const std::vector<filter_row>& table) {
    std::filesystem::create_directories(folder);
    write_table(folder / "ltol_speaker_irs.f32", table, &filter_row::same);
    write_table(folder / "ltor_speaker_irs.f32", table, &filter_row::cross);
    write_table(folder / "rtol_speaker_irs.f32", table, &filter_row::cross);
    write_table(folder / "rtor_speaker_irs.f32", table, &filter_row::same);
}

} // namespace

int main(int argc, char** argv) {
    const spherical_head head(0.0875, 1.0);
    write_tables(argc > 1 ? argv[1] : ".", design_table(head));
}
