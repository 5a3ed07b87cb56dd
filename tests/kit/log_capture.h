/// Catches what the library logs.
#pragma once

#include "frame/logger.h"

#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace test_kit {

/// One line of the log. Compares and prints, so that it works in matchers.
struct log_entry {
    qnl_log_level level;
    std::string message;
};

bool operator==(const log_entry& a, const log_entry& b);
std::ostream& operator<<(std::ostream& out, const log_entry& entry);

/// While it lives, the log is on and comes here instead of standard output; afterwards the logger is as at
/// process start: off, with threshold QNL_LOG_WARNING. One at a time; any thread may log.
///
///     test_kit::log_capture log;
///     qnl_create_room(nullptr, 1);
///     EXPECT_THAT(log.take(), ElementsAre(log_entry{QNL_LOG_ERROR, "Your qnl_handle is null. ..."}));
class log_capture : public qnl_logger_handler {
public:
    /// @param threshold  the lowest level that is caught
    explicit log_capture(qnl_log_level threshold = QNL_LOG_VERBOSE);
    ~log_capture() override;
    log_capture(const log_capture&) = delete;
    log_capture& operator=(const log_capture&) = delete;

    void handle(qnl_log_level level, const char* message) override;

    /// Everything caught since the last call, oldest first.
    std::vector<log_entry> take();

private:
    std::mutex mutex_;
    std::vector<log_entry> entries_;
};

} // namespace test_kit
