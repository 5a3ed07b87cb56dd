#include "remote/websocket_server.h"

#include "frame/logger.h"
#include "remote/commands.h"
#include "remote/protocol_json.h"

#include <exception>
#include <utility>

using nlohmann::json;

namespace {

void log_exception(const std::exception& failure) {
    qnl_logger::get_logger().log(QNL_LOG_ERROR, "JSON library exception: %s", failure.what());
}

std::string refusal(qnl_error_code code, const std::string& description, json request) {
    json response;
    response["Status"] = "ERROR";
    response["Error Code"] = static_cast<int>(code);
    response["Error Description"] = description.empty() ? qnl_error_code_to_string(code) : description;
    response["Request"] = std::move(request);
    return to_lenient_text(response); // the parser quotes what it could not read
}

/// A result that is not UTF-8, such as a name that the host has given, is answered as a failure.
std::string success(json results, json request) {
    json response = std::move(results);
    response["Status"] = "OK";
    response["Request"] = std::move(request);
    try {
        return response.dump();
    } catch (const json::exception& failure) {
        log_exception(failure);
        return refusal(QNL_ERROR_INVALID_VALUE, failure.what(), std::move(response["Request"]));
    }
}

} // namespace

qnl_websocket_server::qnl_websocket_server(const char* path) : config_(qnl_websocket_config::read(path)) {}

std::string qnl_websocket_server::parse_incoming_message(const std::string& message, bool* changed) {
    json request; // null until it is known
    command_result result{QNL_ERROR_INVALID_VALUE};
    try {
        request = parse_request(message);
        // Reading by key fills a missing Command in, and the client sees null there: this is wanted.
        const auto name = request["Command"].get<std::string>();
        result = carry_out(name, command_call(*this, sound_manager_, request), changed);
    } catch (const std::exception& failure) {
        log_exception(failure);
        result.description = failure.what();
    }
    if (result.code != QNL_ERROR_NONE)
        return refusal(result.code, result.description, std::move(request));
    return success(std::move(result.results), std::move(request));
}

void qnl_websocket_server::broadcast_message(const std::string& message) {
    if (transport_ != nullptr)
        transport_->send(message);
}
