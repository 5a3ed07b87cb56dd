#include "frame/exception.h"

quenlis_exception::quenlis_exception(qnl_log_level level, qnl_error_code code, const char* format, ...)
    : code_(code) {
    va_list arguments;
    va_start(arguments, format);
    message_ = format_message(format, arguments);
    va_end(arguments);
    qnl_logger::get_logger().log(level, "%s", message_.data());
}

const char* quenlis_exception::what() const noexcept {
    return message_.data();
}
