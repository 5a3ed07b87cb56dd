// Holds a conference of recordings and writes what every participant hears. See --help.
#include "conference.h"
#include "failure.h"
#include "options.h"
#include "progress_bar.h"
#include "report.h"

#include <algorithm>
#include <iostream>

namespace {

constexpr int exit_failed = 1;
constexpr int exit_bad_usage = 2;

run_times hold(conference& meeting, bool quiet) {
    progress_bar bar(!quiet);
    return meeting.run([&bar](double share) { bar.show(share); });
}

int complain(std::string reason, int exit_code) {
    std::replace(reason.begin(), reason.end(), '\n', ' ');
    std::cerr << "quenlis_conference: " << reason << '\n';
    return exit_code;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const auto chosen = parse_options(argc, argv);
        if (!chosen)
            return 0;
        conference meeting(*chosen);
        const run_times times = hold(meeting, chosen->quiet);
        if (!chosen->quiet)
            print_report(std::cout, meeting, times, chosen->output_directory);
        return 0;
    } catch (const usage_error& error) {
        return complain(error.what(), exit_bad_usage);
    } catch (const std::exception& error) {
        return complain(error.what(), exit_failed);
    }
}
