#include "kit/log_capture.h"

#include <utility>

namespace test_kit {

bool operator==(const log_entry& a, const log_entry& b) {
    return a.level == b.level && a.message == b.message;
}

std::ostream& operator<<(std::ostream& out, const log_entry& entry) {
    return out << qnl_logger::to_string(entry.level) << " \"" << entry.message << '"';
}

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
    entries_.push_back({level, message});
}

std::vector<log_entry> log_capture::take() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(entries_, {});
}

} // namespace test_kit
