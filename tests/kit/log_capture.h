/// Catches what the library logs.
#pragma once

#include "frame/logger.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace test_kit {

/// While it lives, the log is on and comes here instead of standard output; afterwards the logger is as at
/// process start: off, with threshold QNL_LOG_WARNING. One at a time; any thread may log.
///
///     test_kit::log_capture log;
///     qnl_create_room(nullptr, 1);
///     EXPECT_THAT(log.take(), ElementsAre("ERROR: Your qnl_handle is null. ..."));
class log_capture : public qnl_logger_handler {
public:
    /// @param threshold  the lowest level that is caught
    explicit log_capture(qnl_log_level threshold = QNL_LOG_WARNING) { set_logger(this, threshold, true); }
    ~log_capture() override { set_logger(nullptr, QNL_LOG_WARNING, false); }
    log_capture(const log_capture&) = delete;
    log_capture& operator=(const log_capture&) = delete;

    void handle(qnl_log_level level, const char* message) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        lines_.push_back(std::string(qnl_logger::to_string(level)) + ": " + message);
    }

    /// Everything caught since the last call, oldest first: the level, a colon, a space and the message.
    std::vector<std::string> take() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return std::exchange(lines_, {});
    }

private:
    static void set_logger(qnl_logger_handler* handler, qnl_log_level threshold, bool enabled) {
        qnl_logger& logger = qnl_logger::get_logger();
        logger.set_enabled(false);
        logger.initialize(handler);
        logger.set_log_level(threshold);
        logger.set_enabled(enabled);
    }

    std::mutex mutex_;
    std::vector<std::string> lines_;
};

} // namespace test_kit
