#include "report.h"

#include "evaluation.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <limits>
#include <ostream>

namespace {

constexpr int reported_rows[] = {5, 10, 15, 30, 45, 60};
constexpr double octave_bands[] = {125.0, 250.0, 500.0, 1000.0, 2000.0, 4000.0, 8000.0};

// Where separation matters most and the regularisation leaves room for it.
constexpr double core_from = 500.0;
constexpr double core_to = 6000.0;
constexpr int narrowest_core_row = 10;

void print_separation(std::ostream& out, const std::vector<filter_row>& table, const listener& who) {
    out << "Channel separation in dB, " << who.name << "\n  row  ";
    for (const double band : octave_bands)
        out << std::setw(6) << static_cast<int>(band);
    out << "   least of 500 to 6000 Hz\n";
    for (const int row : reported_rows) {
        const row_evaluation filters(table[row]);
        const ear_responses ears = respond(who.head, row);
        out << std::setw(5) << row << "  ";
        for (const double band : octave_bands)
            out << std::setw(6) << filters.separation(ears, band * std::sqrt(0.5), band * std::sqrt(2.0));
        out << std::setw(8) << filters.least_separation(ears, core_from, core_to) << '\n';
    }
    double least = std::numeric_limits<double>::infinity();
    for (int row = narrowest_core_row; row < table_rows; row++)
        least = std::min(
            least, row_evaluation(table[row]).least_separation(respond(who.head, row), core_from, core_to));
    out << "  least of all rows from " << narrowest_core_row << " on, 500 to 6000 Hz: " << least << "\n\n";
}

void print_largest_boost(std::ostream& out, const std::vector<filter_row>& table) {
    row_evaluation::peak largest = {-std::numeric_limits<double>::infinity(), 0.0};
    int largest_row = 0;
    for (int row = 0; row < table_rows; row++) {
        const row_evaluation::peak peak = row_evaluation(table[row]).largest_boost();
        if (peak.gain > largest.gain) {
            largest = peak;
            largest_row = row;
        }
    }
    out << "Largest boost: " << largest.gain << " dB at " << std::setprecision(0) << largest.frequency
        << " Hz, row " << largest_row << '\n';
}

} // namespace

void print_report(std::ostream& out, const std::vector<filter_row>& table,
                  const std::vector<listener>& listeners) {
    out << std::fixed << std::setprecision(1);
    for (const listener& who : listeners)
        print_separation(out, table, who);
    print_largest_boost(out, table);
}
