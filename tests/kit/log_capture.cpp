#include "kit/log_capture.h"

#include <utility>

namespace test_kit {

log_capture::log_capture(qnl_log_level threshold) {
    qnl_logger& logger = qnl_logger::get_logger();
    logger.initialize(this);
    logger.set_log_level(threshold);
    logger.set_enabled(true);
}

log_capture::~log_capture() {
    qnl_logger& logger = qnl_logger::get_logger();
    logger.set_enabled(false);
    logger.set_log_level(QNL_LOG_WARNING);
    logger.initialize(nullptr);
}

void log_capture::handle(qnl_log_level level, const char* message) {
    const std::lock_guard<std::mutex> lock(mutex_);
    lines_.push_back(std::string(qnl_logger::to_string(level)) + ": " + message);
}

std::vector<std::string> log_capture::take() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(lines_, {});
}

} // namespace test_kit
