#include "report.h"

#include "evaluation.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <ostream>

namespace {

struct curve {
    int row;
    const char* colour;
};

constexpr curve curves[] = {{5, "#d95f02"}, {10, "#1b9e77"}, {30, "#7570b3"}, {60, "#222"}};

constexpr double lowest_frequency = 100.0;
constexpr double highest_frequency = 16000.0;
constexpr double highest_separation = 60.0; // dB

// In pixels: the inside of a panel, and the room around it.
constexpr double panel_width = 270.0;
constexpr double panel_height = 180.0;
constexpr double margin = 40.0;
constexpr double panel_pitch = panel_width + 26.0;

double x_of(double frequency) {
    return panel_width * std::log(frequency / lowest_frequency) /
           std::log(highest_frequency / lowest_frequency);
}

double y_of(double separation) {
    return panel_height * (1.0 - std::clamp(separation / highest_separation, 0.0, 1.0));
}

void draw_text(std::ostream& out, double x, double y, const char* anchor, const std::string& text) {
    out << "<text x=\"" << x << "\" y=\"" << y << "\" text-anchor=\"" << anchor << "\">" << text
        << "</text>\n";
}

void draw_line(std::ostream& out, double x1, double y1, double x2, double y2) {
    out << "<path d=\"M" << x1 << ' ' << y1 << 'L' << x2 << ' ' << y2 << "\" stroke=\"#ccc\"/>\n";
}

void draw_grid(std::ostream& out, bool with_scale) {
    for (const int hertz : {100, 200, 500, 1000, 2000, 5000, 10000}) {
        draw_line(out, x_of(hertz), 0.0, x_of(hertz), panel_height);
        draw_text(out, x_of(hertz), panel_height + 14.0, "middle",
                  hertz < 1000 ? std::to_string(hertz) : std::to_string(hertz / 1000) + "k");
    }
    for (int separation = 0; separation <= highest_separation; separation += 10) {
        draw_line(out, 0.0, y_of(separation), panel_width, y_of(separation));
        if (with_scale)
            draw_text(out, -5.0, y_of(separation) + 4.0, "end", std::to_string(separation));
    }
}

// One point every twelfth of an octave, each the mean of a third of an octave.
void draw_curve(std::ostream& out, const row_evaluation& filters, const ear_responses& ears,
                const char* colour) {
    const double half_band = std::exp2(1.0 / 6.0);
    out << "<polyline fill=\"none\" stroke-width=\"1.6\" stroke=\"" << colour << "\" points=\"";
    for (double frequency = lowest_frequency; frequency <= highest_frequency;
         frequency *= std::exp2(1.0 / 12.0))
        out << x_of(frequency) << ','
            << y_of(filters.separation(ears, frequency / half_band, frequency * half_band)) << '\n';
    out << "\"/>\n";
}

void draw_panel(std::ostream& out, const std::vector<filter_row>& table, const listener& who, double left) {
    out << "<g transform=\"translate(" << left << ' ' << margin << ")\">\n";
    draw_grid(out, left == margin);
    draw_text(out, panel_width / 2.0, -8.0, "middle", who.name);
    draw_text(out, panel_width / 2.0, panel_height + 30.0, "middle", "Hz");
    for (const curve& drawn : curves)
        draw_curve(out, row_evaluation(table[drawn.row]), respond(who.head, drawn.row), drawn.colour);
    out << "</g>\n";
}

void draw_legend(std::ostream& out) {
    double x = margin;
    draw_text(out, x, 14.0, "start", "Channel separation in dB at a half-span angle of");
    x += 310.0;
    for (const curve& drawn : curves) {
        out << "<g fill=\"" << drawn.colour << "\" font-weight=\"bold\">";
        draw_text(out, x, 14.0, "start", std::to_string(drawn.row) + "\u00b0");
        out << "</g>\n";
        x += 32.0;
    }
}

} // namespace

void draw_separation(std::ostream& out, const std::vector<filter_row>& table,
                     const std::vector<listener>& listeners) {
    const double width = margin + panel_pitch * static_cast<double>(listeners.size());
    const double height = panel_height + 2.0 * margin;
    out << std::fixed << std::setprecision(1) << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 "
        << width << ' ' << height << "\" width=\"" << width << "\" height=\"" << height
        << "\" font-family=\"sans-serif\" font-size=\"11\">\n"
        << "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
    draw_legend(out);
    double left = margin;
    for (const listener& who : listeners) {
        draw_panel(out, table, who, left);
        left += panel_pitch;
    }
    out << "</svg>\n";
}
