#pragma once

#include <quenlis.h>

#include <optional>
#include <string>

/// What the command line asks for.
struct options {
    std::string layout_file; ///< empty: the engine's own layout
    std::string server_file; ///< empty: a default one, made for the occasion
    int rooms = 1;           ///< their ids count from 1
    int people = 2;          ///< regular participants of every room; their ids count from 1
    bool events = false;     ///< whether events are printed
    std::optional<qnl_log_level> log_level;
};

/// Reads the command line. Throws a usage_error.
/// @return nothing when only help or the version was asked for; it has been printed then
std::optional<options> parse_options(int argc, char** argv);
