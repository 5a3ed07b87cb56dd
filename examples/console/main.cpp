// Tries the control protocol: requests on standard input, responses on standard output. See --help.
#include "conference/failure.h"
#include "options.h"
#include "session.h"

#include <iostream>

namespace {

constexpr int exit_failed = 1;
constexpr int exit_bad_usage = 2;

int complain(const std::string& reason, int exit_code) {
    std::cerr << "quenlis_console: " << reason << '\n';
    return exit_code;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const auto chosen = parse_options(argc, argv);
        if (!chosen)
            return 0;
        session talk(*chosen);
        for (std::string request; std::getline(std::cin, request);)
            std::cout << talk.answer(request) << std::endl; // whoever asks waits for it
        return 0;
    } catch (const usage_error& error) {
        return complain(error.what(), exit_bad_usage);
    } catch (const std::exception& error) {
        return complain(error.what(), exit_failed);
    }
}
