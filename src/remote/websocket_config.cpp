#include "remote/websocket_config.h"

#include "frame/exception.h"
#include "remote/protocol_json.h"

#include <fstream>

using nlohmann::json;

namespace {

void log_default(const char* name, const std::string& value) {
    qnl_logger::get_logger().log(
        QNL_LOG_INFO,
        "Your websocket configuration file is missing a %s value, we will use the default of %s", name,
        value.c_str());
}

/// Whether the document has that key. The value stays as it is otherwise.
bool read_text(const json& document, const char* key, std::string& value) {
    const auto found = document.find(key);
    if (found == document.end())
        return false;
    value = found->get<std::string>();
    return true;
}

void read_port(const json& document, int32_t& port) {
    const auto found = document.find("port");
    if (found != document.end())
        port = static_cast<uint16_t>(read_integer(*found)); // the low 16 bits: this is wanted
    else
        log_default("Port", std::to_string(port));
}

void read_credential(const json& document, const char* key, std::string& value) {
    if (!read_text(document, key, value))
        log_default(key, value);
}

} // namespace

qnl_websocket_config qnl_websocket_config::read(const char* path) {
    if (path == nullptr)
        throw quenlis_exception(
            QNL_LOG_WARNING, QNL_ERROR_INVALID_VALUE,
            "You disabled the websocket server by using NULL for the websocket config file path.");
    std::ifstream file(path);
    const json document = parse_file(file);
    qnl_websocket_config config;
    read_port(document, config.port);
    read_text(document, "cert_file_name", config.cert_file_name);
    read_text(document, "dh_params_file_name", config.dh_params_file_name);
    read_text(document, "key_file_name", config.key_file_name);
    read_text(document, "passphrase", config.passphrase);
    read_credential(document, "authentification_key", config.authentification_key);
    read_credential(document, "authentification_value", config.authentification_value);
    return config;
}
