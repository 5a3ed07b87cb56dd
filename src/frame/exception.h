/// The failure of an operation inside the library.
#pragma once

#include "frame/logger.h"
#include "quenlis.h"

#include <exception>
#include <vector>

/// Carries an error code to the door of the library. Building one writes its log line, so a failure is logged
/// once, where it is raised, and nothing logs it again.
class quenlis_exception : public std::exception {
public:
    /// Formats the message, printf style, and logs it at `level`. Allocates the message.
    quenlis_exception(qnl_log_level level, qnl_error_code code, const char* format, ...) QUENLIS_PRINTF(4, 5);

    /// The formatted message, whether or not it was logged.
    const char* what() const noexcept override;
    qnl_error_code code() const noexcept { return static_cast<qnl_error_code>(code_); }

private:
    int code_;
    std::vector<char> message_;
};
