/// The process-wide log.
#pragma once

#include "quenlis.h"

#include <cstdarg>
#include <mutex>
#include <vector>

#if defined(__GNUC__)
#define QUENLIS_PRINTF(format_index, first_argument)                                                         \
    __attribute__((format(printf, format_index, first_argument)))
#else
#define QUENLIS_PRINTF(format_index, first_argument)
#endif

/// Formats as printf does, sized by a measuring pass.
/// @return the text with its terminating zero; only the zero when the format cannot be carried out
std::vector<char> format_message(const char* format, va_list arguments);

/// Where log lines go. A host that links the classes may derive its own and install it with
/// qnl_logger::initialize.
class qnl_logger_handler {
public:
    virtual ~qnl_logger_handler() = default;

    /// Takes one message. Called under the logger's mutex, on the thread that logs: it must not log itself.
    /// @param level  as given by the caller, also outside the list
    virtual void handle(qnl_log_level level, const char* message) = 0;
};

/// The one logger of the process. Off at start, with threshold QNL_LOG_WARNING and a sink that writes lines
/// to standard output.
class qnl_logger {
public:
    /// The singleton, built at the first call. It lives to the end of the process.
    static qnl_logger& get_logger();

    virtual ~qnl_logger() = default;
    qnl_logger(const qnl_logger&) = delete;
    qnl_logger& operator=(const qnl_logger&) = delete;

    /// Logs one message, printf style, when the log is enabled and `level` reaches the threshold.
    /// Allocates the message. Any thread; one line at a time.
    virtual void log(qnl_log_level level, const char* format, ...) QUENLIS_PRINTF(3, 4);

    /// Replaces the sink. @param handler  stays the caller's and must outlive its use; null brings the sink
    /// for standard output back
    void initialize(qnl_logger_handler* handler);
    void set_enabled(bool enabled);
    /// @param level  QNL_LOG_VERBOSE to QNL_LOG_ERROR
    void set_log_level(qnl_log_level level);

    /// The label of a level, such as "WARNING"; "ERROR" for a level outside the list.
    static const char* to_string(qnl_log_level level);

protected:
    qnl_logger();

private:
    qnl_logger_handler* handler_;
    std::mutex mutex_;
    bool enabled_ = false;
    qnl_log_level level_ = QNL_LOG_WARNING;
};
