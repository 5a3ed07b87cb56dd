// The log and the exception that writes to it.
#include "frame/exception.h"
#include "frame/logger.h"
#include "kit/log_capture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

using test_kit::log_capture;
using test_kit::log_entry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

qnl_logger& logger() {
    return qnl_logger::get_logger();
}

TEST(Logger, PrintsOneWholeLine) {
    qnl_enable_logging(true);
    testing::internal::CaptureStdout();
    logger().log(QNL_LOG_WARNING, "%s %i", "room", 7);
    logger().log(static_cast<qnl_log_level>(99), "beyond");
    logger().log(QNL_LOG_INFO, "below the threshold");
    qnl_enable_logging(false);
    logger().log(QNL_LOG_ERROR, "off");
    std::fflush(stdout);
    EXPECT_THAT(
        testing::internal::GetCapturedStdout(),
        MatchesRegex("\\[Quenlis\\] \\[[A-Z][a-z][a-z], [0-9][0-9]\\.[0-9][0-9]\\.[0-9][0-9][0-9][0-9] "
                     "[0-9][0-9]:[0-9][0-9]:[0-9][0-9]\\] \\[WARNING\\]: room 7\n"
                     "\\[Quenlis\\] \\[[^]]*\\] \\[ERROR\\]: beyond\n"));
}

TEST(Logger, FiltersByLevel) {
    log_capture log(QNL_LOG_WARNING);
    logger().log(QNL_LOG_INFO, "quiet");
    logger().log(QNL_LOG_WARNING, "loud");
    EXPECT_EQ(qnl_set_log_level(QNL_LOG_ERROR), QNL_ERROR_NONE);
    logger().log(QNL_LOG_WARNING, "quiet now");
    EXPECT_THAT(log.take(), ElementsAre(log_entry{QNL_LOG_WARNING, "loud"}));
    qnl_set_log_level(QNL_LOG_VERBOSE);
    for (const int bad : {5, -1})
        EXPECT_EQ(qnl_set_log_level(static_cast<qnl_log_level>(bad)), QNL_ERROR_INVALID_VALUE);
    logger().log(QNL_LOG_VERBOSE, "the level stayed");
    const log_entry refusal{QNL_LOG_WARNING, "Valid log levels are between 0 and 4"};
    EXPECT_THAT(log.take(), ElementsAre(refusal, refusal, log_entry{QNL_LOG_VERBOSE, "the level stayed"}));
}

TEST(Logger, FormatsMessagesOfAnyLength) {
    log_capture log;
    const std::string longest(100000, 'x');
    logger().log(QNL_LOG_ERROR, "%s!", longest.c_str());
    EXPECT_EQ(log.take().front().message, longest + "!");
    logger().log(QNL_LOG_ERROR, "%s", "");
    EXPECT_EQ(log.take().front().message, "");
}

TEST(Exception, LogsItselfOnceAndKeepsItsTextWhenTheLogIsOff) {
    {
        log_capture log;
        const quenlis_exception failure(QNL_LOG_WARNING, QNL_ERROR_INVALID_VALUE, "100%% of %i", 3);
        EXPECT_THAT(log.take(), ElementsAre(log_entry{QNL_LOG_WARNING, "100% of 3"}));
        const quenlis_exception copy = failure; // NOLINT: that a copy is silent is the point
        EXPECT_STREQ(copy.what(), "100% of 3");
        EXPECT_THAT(log.take(), IsEmpty());
    }
    const quenlis_exception unseen(QNL_LOG_ERROR, QNL_ERROR_DATA_NULL, "%s", "nobody reads this");
    EXPECT_EQ(unseen.code(), QNL_ERROR_DATA_NULL);
    EXPECT_STREQ(unseen.what(), "nobody reads this");
}

} // namespace
