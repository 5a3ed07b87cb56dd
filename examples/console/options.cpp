#include "options.h"

#include "command_list.h"
#include "conference/failure.h"

#include <CLI/CLI.hpp>
#include <map>

namespace {

constexpr const char* introduction =
    "Tries the control protocol: each line on standard input is a request, each line on standard output the\n"
    "response to it. Between two requests every participant but the demo ones pulls a block of audio.";

const std::map<std::string, qnl_log_level> log_levels = {{"verbose", QNL_LOG_VERBOSE},
                                                         {"debug", QNL_LOG_DEBUG},
                                                         {"info", QNL_LOG_INFO},
                                                         {"warning", QNL_LOG_WARNING},
                                                         {"error", QNL_LOG_ERROR}};

void declare(CLI::App& app, options& chosen, std::string& log_level) {
    app.add_option("--layout-file", chosen.layout_file, "Room layouts (JSON)")
        ->check(CLI::ExistingFile)
        ->option_text("FILE");
    app.add_option("--server-file", chosen.server_file, "Configuration of the control server (JSON)")
        ->check(CLI::ExistingFile)
        ->option_text("FILE");
    app.add_option("--rooms", chosen.rooms, "Rooms that are there, 1 by default")
        ->check(CLI::Range(0, 100))
        ->option_text("N");
    app.add_option("--people", chosen.people, "Participants in every room, 2 by default")
        ->check(CLI::Range(0, 100))
        ->option_text("N");
    app.add_flag("--events", chosen.events, "Print events on standard error");
    app.add_option("--log", log_level,
                   "Print the engine's log on standard error, from this\nlevel on: verbose, debug, info, "
                   "warning or error")
        ->check(CLI::IsMember(log_levels))
        ->option_text("LEVEL");
    app.set_help_flag("-h,--help", "Show this text");
    app.set_version_flag("--version", std::string(qnl_get_version()), "Show the engine's version");
}

} // namespace

std::optional<options> parse_options(int argc, char** argv) {
    options chosen;
    std::string log_level;
    CLI::App app(introduction, "quenlis_console");
    app.footer(command_list);
    app.get_formatter()->column_width(38);
    declare(app, chosen, log_level);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& request) {
        app.exit(request);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        throw usage_error(error.what());
    }
    if (!log_level.empty())
        chosen.log_level = log_levels.at(log_level);
    return chosen;
}
