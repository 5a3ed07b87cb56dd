#include "kit/log_capture.h"

#include <gmock/gmock.h>

namespace {

using test_kit::log_capture;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(log_capture, catches_lines_in_order_and_leaves_the_log_as_at_the_start) {
    qnl_logger& logger = qnl_logger::get_logger();
    {
        log_capture log(QNL_LOG_DEBUG);
        logger.log(QNL_LOG_VERBOSE, "below the threshold");
        logger.log(QNL_LOG_DEBUG, "seat %d", 4);
        logger.log(QNL_LOG_ERROR, "no seat");
        EXPECT_THAT(log.take(), ElementsAre("DEBUG: seat 4", "ERROR: no seat"));
        EXPECT_THAT(log.take(), IsEmpty());
    }
    testing::internal::CaptureStdout();
    logger.log(QNL_LOG_ERROR, "off");
    logger.set_enabled(true);
    logger.log(QNL_LOG_INFO, "below the first threshold");
    logger.set_enabled(false);
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

} // namespace
