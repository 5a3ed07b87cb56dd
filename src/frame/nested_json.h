/// JSON from outside the process.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

/// Parses a whole text, with nothing behind the document.
///
/// Raises the JSON library's parse_error for a malformed text, and std::invalid_argument for what that
/// library would let pass: a NUL byte, which it takes for the end, and more than 256 levels of nesting, so
/// that whatever walks the document later stays within the stack. Takes time in proportion to the text.
nlohmann::json parse_nested_json(const std::string& text);
