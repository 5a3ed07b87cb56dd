#pragma once

#include "control_change.h"
#include "sample_type.h"

#include <quenlis.h>

#include <optional>
#include <string>
#include <vector>

/// What the command line asks for.
struct options {
    std::vector<std::string> recordings; ///< paths, one talker each
    int listeners = 0;                   ///< participants that only listen
    std::string output_directory = "mixes";
    qnl_library_configuration format{48000, 480, 2, true, 1};
    sample_type samples = sample_type::float32;
    std::string layout_file; ///< empty: the engine's own layout
    std::optional<int> layout_id;
    std::vector<control_change> changes; ///< in the order in which they are made
    std::optional<qnl_log_level> log_level;
    bool quiet = false;
};

/// Reads the command line. Throws a usage_error.
/// @return nothing when only help or the version was asked for; it has been printed then
std::optional<options> parse_options(int argc, char** argv);
