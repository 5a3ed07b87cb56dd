#include "remote/protocol_json.h"

#include <limits>
#include <stdexcept>

using nlohmann::json;

namespace {

constexpr int deepest_level = 256;

int64_t saturating_integer(double number) {
    if (number >= 0x1p63)
        return std::numeric_limits<int64_t>::max();
    if (number < -0x1p63)
        return std::numeric_limits<int64_t>::min();
    return static_cast<int64_t>(number);
}

bool is_beyond_64_bits(const json& value) {
    return value.is_number_unsigned() &&
           value.get<uint64_t>() > static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
}

bool refuse_depth(int levels_above, json::parse_event_t event, json&) {
    const bool opens =
        event == json::parse_event_t::object_start || event == json::parse_event_t::array_start;
    if (opens && levels_above >= deepest_level)
        throw std::invalid_argument("the request is nested deeper than 256 levels");
    return true;
}

} // namespace

json parse_request(const std::string& text) {
    return json::parse(text, refuse_depth);
}

json parse_file(std::istream& file) {
    return json::parse(file, refuse_depth);
}

std::string to_lenient_text(const json& document) {
    return document.dump(-1, ' ', false, json::error_handler_t::replace);
}

int64_t read_integer(const json& value) {
    if (value.is_boolean())
        return value.get<bool>() ? 1 : 0;
    if (value.is_number_float())
        return saturating_integer(value.get<double>());
    if (is_beyond_64_bits(value))
        return std::numeric_limits<int64_t>::max();
    return value.get<int64_t>();
}

int32_t read_int32(const json& value) {
    const int64_t number = read_integer(value);
    if (number < std::numeric_limits<int32_t>::min() || number > std::numeric_limits<int32_t>::max())
        throw std::out_of_range("the number " + value.dump() + " is beyond 32 bits");
    return static_cast<int32_t>(number);
}
