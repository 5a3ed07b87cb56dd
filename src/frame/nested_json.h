/// JSON from outside the process.
#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>

/// Reads a whole file, with nothing behind the document; one that can't be read counts as empty.
///
/// Raises the JSON library's parse_error for a malformed text, std::length_error above 64 MiB, which an endless
/// device would pass as well, and std::invalid_argument for what that library would let pass: a NUL byte, which
/// it takes for the end, and more than 256 levels of nesting, so that whatever walks the document later stays
/// within the stack. Takes time in proportion to the text.
nlohmann::json read_nested_json(std::istream& file);
