#include "kit/log_capture.h"

#include <gmock/gmock.h>

namespace {

using test_kit::log_capture;
using test_kit::log_entry;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(log_capture, catches_levels_and_messages_in_order) {
    log_capture log;
    qnl_logger::get_logger().log(QNL_LOG_VERBOSE, "seat %d", 4);
    qnl_logger::get_logger().log(QNL_LOG_ERROR, "%s", "no seat");
    EXPECT_THAT(log.take(),
                ElementsAre(log_entry{QNL_LOG_VERBOSE, "seat 4"}, log_entry{QNL_LOG_ERROR, "no seat"}));
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(log_capture, keeps_to_its_threshold) {
    log_capture log(QNL_LOG_WARNING);
    qnl_logger::get_logger().log(QNL_LOG_INFO, "below");
    qnl_logger::get_logger().log(QNL_LOG_WARNING, "at");
    EXPECT_THAT(log.take(), ElementsAre(log_entry{QNL_LOG_WARNING, "at"}));
}

TEST(log_capture, leaves_the_log_off_and_at_its_first_threshold) {
    { const log_capture log; }
    testing::internal::CaptureStdout();
    qnl_logger::get_logger().log(QNL_LOG_ERROR, "while off");
    qnl_enable_logging(true);
    qnl_logger::get_logger().log(QNL_LOG_INFO, "below the threshold");
    qnl_logger::get_logger().log(QNL_LOG_WARNING, "at the threshold");
    qnl_enable_logging(false);
    std::fflush(stdout);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_THAT(printed, testing::EndsWith("[WARNING]: at the threshold\n"));
    EXPECT_THAT(printed, testing::Not(testing::HasSubstr("while off")));
    EXPECT_THAT(printed, testing::Not(testing::HasSubstr("below the threshold")));
}

} // namespace
