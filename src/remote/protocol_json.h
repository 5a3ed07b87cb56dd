/// The JSON of the control protocol: texts that come from outside, and texts that must always go out.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string>

/// Parses a whole request.
///
/// Raises the JSON library's exceptions for what is no JSON, and std::invalid_argument for more than 256 levels
/// of nesting, so that whatever walks the document later stays within the stack. The parser itself does not
/// recurse, and stops at the first level too many.
nlohmann::json parse_request(const std::string& text);

/// The same for a whole file; one that can't be read is no JSON.
nlohmann::json parse_file(std::istream& file);

/// One line without whitespace, members sorted by key. Bytes that are not UTF-8 become replacement characters.
std::string to_lenient_text(const nlohmann::json& document);

/// A number or a boolean as an integer: true is 1, a fraction is cut, and what lies beyond 64 bits is the
/// nearest end of the range. Raises the JSON library's type_error for any other type.
int64_t read_integer(const nlohmann::json& value);

/// As read_integer, but raises std::out_of_range for what lies beyond 32 bits: a number that wraps would name
/// another room or another participant.
int32_t read_int32(const nlohmann::json& value);
