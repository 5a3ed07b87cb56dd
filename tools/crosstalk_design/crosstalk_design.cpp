// Computes the filter tables of the crosstalk cancellation. See --help.
#include "cancellation.h"
#include "report.h"
#include "spherical_head.h"
#include "table_file.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr double head_radius = 0.0875;     // metres, the common figure for adults
constexpr double listening_distance = 1.0; // metres, as at a desk

// Cancellation for loudspeakers that coincide does not exist: the narrowest rows share one design.
constexpr int narrowest_angle = 2;

std::vector<filter_row> design_table(const spherical_head& head) {
    std::vector<filter_row> table;
    table.reserve(table_rows);
    for (int angle = 0; angle < table_rows; angle++)
        table.push_back(cancel_crosstalk(respond(head, std::max(angle, narrowest_angle))));
    return table;
}

using taps_of_row = std::array<float, row_taps> filter_row::*;

void write_table(const std::filesystem::path& file, const std::vector<filter_row>& table, taps_of_row taps) {
    std::vector<float> values;
    for (const filter_row& row : table)
        values.insert(values.end(), (row.*taps).begin(), (row.*taps).end());
    write_table_file(file, values);
}

void write_tables(const std::filesystem::path& folder, const std::vector<filter_row>& table) {
    std::filesystem::create_directories(folder);
    write_table(folder / "ltol_speaker_irs.f32", table, &filter_row::same);
    write_table(folder / "ltor_speaker_irs.f32", table, &filter_row::cross);
    write_table(folder / "rtol_speaker_irs.f32", table, &filter_row::cross);
    write_table(folder / "rtor_speaker_irs.f32", table, &filter_row::same);
}

void write_plot(const std::filesystem::path& file, const std::vector<filter_row>& table,
                const std::vector<listener>& listeners) {
    std::ofstream out(file);
    draw_separation(out, table, listeners);
    if (!out.flush())
        throw std::runtime_error("cannot write " + file.string());
}

std::vector<listener> try_out_heads() {
    return {{"the head it is designed for", spherical_head(head_radius, listening_distance)},
            {"a head 10% larger", spherical_head(1.1 * head_radius, listening_distance)},
            {"a head 10% smaller", spherical_head(0.9 * head_radius, listening_distance)}};
}

void run(const std::string& folder, const std::string& plot) {
    const std::vector<listener> listeners = try_out_heads();
    const std::vector<filter_row> table = design_table(listeners.front().head);
    if (!folder.empty())
        write_tables(folder, table);
    if (!plot.empty())
        write_plot(plot, table, listeners);
    print_report(std::cout, table, listeners);
}

} // namespace

int main(int argc, char** argv) {
    try {
        CLI::App app("Computes the filter tables of the crosstalk cancellation and prints what they achieve");
        std::string folder;
        std::string plot;
        app.add_option("folder", folder, "where the four tables go; without it none is written");
        app.add_option("--plot", plot, "an SVG file for a drawing of the separation over frequency");
        CLI11_PARSE(app, argc, argv);
        run(folder, plot);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "crosstalk_design: " << error.what() << '\n';
        return 1;
    }
}
