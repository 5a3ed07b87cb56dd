#include "report.h"

#include <algorithm>
#include <cstdio>
#include <ostream>

namespace {

constexpr int level_width = 11;

std::string fixed(double value, int digits) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

std::string right(const std::string& text, int width) {
    const auto gap = std::max(0, width - static_cast<int>(text.size()));
    return std::string(static_cast<std::size_t>(gap), ' ') + text;
}

std::string left(const std::string& text, std::size_t width) {
    return text + std::string(std::max(text.size(), width) - text.size(), ' ');
}

void print_table(std::ostream& out, const std::vector<member>& members) {
    std::size_t name_width = 4;
    for (const member& person : members)
        name_width = std::max(name_width, person.name.size());

    out << "  id  " << left("name", name_width)
        << "  seat   level in  level out   peak out  blocks without audio\n";
    for (const member& person : members)
        out << right(std::to_string(person.id), 4) << "  " << left(person.name, name_width)
            << right(person.seat < 1 ? "-" : std::to_string(person.seat), 6)
            << right(person.talk ? fixed(person.level_in.rms_dbfs(), 1) : "-", level_width)
            << right(fixed(person.level_out.rms_dbfs(), 1), level_width)
            << right(fixed(person.level_out.peak_dbfs(), 1), level_width)
            << right(std::to_string(person.blocks_without_audio), 22) << '\n';
    out << "Levels are in dBFS, root mean square over the whole length; a full-scale square wave is 0.\n";
}

} // namespace

void print_report(std::ostream& out, const conference& held, const run_times& times,
                  const std::string& mixes_directory) {
    print_table(out, held.members());
    out << held.members().size() << " mixes written to " << mixes_directory << '\n'
        << fixed(times.audio, 2) << " s of conference in " << fixed(times.wall, 3) << " s, "
        << fixed(times.audio / times.wall, 0)
        << " times faster than real time; pushing and pulling alone took " << fixed(times.calls, 3) << " s, "
        << fixed(times.audio / times.calls, 0) << " times faster\n";
}
