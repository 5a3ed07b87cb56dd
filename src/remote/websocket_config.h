/// What the control server's configuration file says.
#pragma once

#include <cstdint>
#include <string>

/// For a transport to work by: the library itself opens no port and looks at no client.
struct qnl_websocket_config {
    int32_t port = 9002;                              ///< 0 to 65535
    std::string cert_file_name;                       ///< empty when not given, as the next three
    std::string dh_params_file_name;                  //
    std::string key_file_name;                        //
    std::string passphrase;                           ///< of the key file
    std::string authentification_key = "Ardentvalve"; ///< with the value, what tells a genuine client
    std::string authentification_value = "517264903"; //

    /// Reads a file: a JSON object all of whose keys, named like the fields, may be missing. A missing port,
    /// authentification_key or authentification_value is logged at QNL_LOG_INFO and takes its default. A
    /// document of another JSON type counts as an empty object. A port beyond 16 bits is cut to its low 16.
    ///
    /// Raises quenlis_exception at QNL_LOG_WARNING for a null path and the JSON library's exceptions for a
    /// file that is missing, no JSON, or holds a value of the wrong type.
    static qnl_websocket_config read(const char* path);
};
