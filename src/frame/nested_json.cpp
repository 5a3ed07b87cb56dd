#include "frame/nested_json.h"

#include <stdexcept>

using nlohmann::json;

namespace {

constexpr int deepest_level = 256;

/// Walks a text without building a document and stops at the first level too many.
class level_counter final : public json::json_sax_t {
public:
    bool too_deep() const { return level_ > deepest_level; }

    bool start_object(std::size_t) override { return ++level_ <= deepest_level; }
    bool start_array(std::size_t) override { return ++level_ <= deepest_level; }
    bool end_object() override { return leave(); }
    bool end_array() override { return leave(); }
    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool key(string_t&) override { return true; }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
        return false;
    }

private:
    bool leave() {
        --level_;
        return true;
    }

    int level_ = 0;
};

} // namespace

json parse_nested_json(const std::string& text) {
    if (text.find('\0') != std::string::npos)
        throw std::invalid_argument("the JSON text holds a NUL byte");
    level_counter counter;
    json::sax_parse(text, &counter);
    if (counter.too_deep())
        throw std::invalid_argument("the JSON text is nested deeper than 256 levels");
    return json::parse(text);
}
