#pragma once

#include <quenlis.h>

#include <stdexcept>
#include <string>

/// The command line asks for something that cannot be. what() is one line for the person at the terminal.
class usage_error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A file or the engine failed. what() is one line for the person at the terminal.
class failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws a failure that says what could not be done and names the code, unless the code is a success.
inline void require_success(int code, const std::string& what_was_tried) {
    if (code != QNL_ERROR_NONE)
        throw failure("cannot " + what_was_tried + ": " + qnl_error_code_to_string(code) +
                      " (--log warning shows the engine's reason)");
}
