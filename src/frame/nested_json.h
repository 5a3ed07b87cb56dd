/// JSON from outside the process.
#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>

/// Parses a whole text, with nothing behind the document. Texts nested deeper than 256 levels count as
/// malformed, so that whatever walks the document later stays within the stack.
///
/// @param text  anything that nlohmann::json::parse takes
/// Raises the JSON library's exceptions, and std::invalid_argument for the nesting.
template <class Text>
nlohmann::json parse_nested_json(Text&& text) {
    constexpr int deepest = 256;
    const auto within_depth = [](int depth, nlohmann::json::parse_event_t event, nlohmann::json&) {
        const bool opens = event == nlohmann::json::parse_event_t::object_start ||
                           event == nlohmann::json::parse_event_t::array_start;
        if (opens && depth >= deepest)
            throw std::invalid_argument("the JSON text is nested deeper than 256 levels");
        return true;
    };
    return nlohmann::json::parse(std::forward<Text>(text), within_depth);
}
