#include "frame/logger.h"

#include <cstdio>
#include <ctime>
#include <string>

namespace {

std::string local_time_text() {
    const std::time_t now = std::time(nullptr);
    std::tm broken_down{};
    char text[32] = "";
    if (localtime_r(&now, &broken_down) == nullptr ||
        std::strftime(text, sizeof text, "%a, %d.%m.%Y %H:%M:%S", &broken_down) == 0)
        return {};
    return text;
}

class standard_output_handler final : public qnl_logger_handler {
public:
    void handle(qnl_log_level level, const char* message) override {
        std::string line = "[Quenlis] [" + local_time_text() + "] [" + qnl_logger::to_string(level) + "]: ";
        line += message;
        line += '\n';
        std::fwrite(line.data(), 1, line.size(), stdout);
    }
};

qnl_logger_handler* default_handler() {
    static auto* const handler = new standard_output_handler;
    return handler;
}

} // namespace

std::vector<char> format_message(const char* format, va_list arguments) {
    va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    std::vector<char> text(length > 0 ? static_cast<size_t>(length) + 1 : 1);
    if (length > 0)
        std::vsnprintf(text.data(), text.size(), format, arguments);
    return text;
}

qnl_logger& qnl_logger::get_logger() {
    // Never destroyed, so that objects with static storage may log to the last.
    static auto* const logger = new qnl_logger;
    return *logger;
}

qnl_logger::qnl_logger() : handler_(default_handler()) {}

void qnl_logger::log(qnl_log_level level, const char* format, ...) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!enabled_ || level < level_)
        return;
    va_list arguments;
    va_start(arguments, format);
    const std::vector<char> message = format_message(format, arguments);
    va_end(arguments);
    handler_->handle(level, message.data());
}

void qnl_logger::initialize(qnl_logger_handler* handler) {
    const std::lock_guard<std::mutex> lock(mutex_);
    handler_ = handler != nullptr ? handler : default_handler();
}

void qnl_logger::set_enabled(bool enabled) {
    const std::lock_guard<std::mutex> lock(mutex_);
    enabled_ = enabled;
}

void qnl_logger::set_log_level(qnl_log_level level) {
    const std::lock_guard<std::mutex> lock(mutex_);
    level_ = level;
}

const char* qnl_logger::to_string(qnl_log_level level) {
    static const char* const labels[] = {"VERBOSE", "DEBUG", "INFO", "WARNING", "ERROR"};
    return level >= QNL_LOG_VERBOSE && level <= QNL_LOG_ERROR ? labels[level] : labels[QNL_LOG_ERROR];
}
