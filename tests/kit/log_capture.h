/// Catches what the library logs.
#pragma once

#include "frame/logger.h"

#include <mutex>
#include <string>
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
    explicit log_capture(qnl_log_level threshold = QNL_LOG_WARNING);
    ~log_capture() override;
    log_capture(const log_capture&) = delete;
    log_capture& operator=(const log_capture&) = delete;

    void handle(qnl_log_level level, const char* message) override;

    /// Everything caught since the last call, oldest first: the level, a colon, a space and the message.
    std::vector<std::string> take();

private:
    std::mutex mutex_;
    std::vector<std::string> lines_;
};

} // namespace test_kit
