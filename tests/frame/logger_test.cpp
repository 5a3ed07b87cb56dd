// The log and the exception that writes to it.
#include "frame/logger.h"

#include "frame/exception.h"
#include "kit/host.h"

namespace {

using test_kit::log_capture;
using testing::ElementsAre;

qnl_logger& logger() {
    return qnl_logger::get_logger();
}

TEST(Logger, PrintsWholeLinesWhileItIsOn) {
    qnl_enable_logging(true);
    testing::internal::CaptureStdout();
    logger().log(QNL_LOG_WARNING, "%s %i", "room", 7);
    logger().log(static_cast<qnl_log_level>(99), "beyond");
    logger().log(QNL_LOG_INFO, "below the threshold");
    qnl_enable_logging(false);
    logger().log(QNL_LOG_ERROR, "off");
    std::fflush(stdout);
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                testing::MatchesRegex("\\[Quenlis\\] \\[[A-Z][a-z]{2}, [0-9]{2}\\.[0-9]{2}\\.[0-9]{4} "
                                      "[0-9]{2}:[0-9]{2}:[0-9]{2}\\] \\[WARNING\\]: room 7\n"
                                      "\\[Quenlis\\] \\[[^]]*\\] \\[ERROR\\]: beyond\n"));
}

TEST(Logger, FiltersByALevelThatOnlyAValidOneReplaces) {
    log_capture log(QNL_LOG_VERBOSE);
    EXPECT_EQ(qnl_set_log_level(QNL_LOG_ERROR), QNL_ERROR_NONE);
    logger().log(QNL_LOG_WARNING, "quiet");
    logger().log(QNL_LOG_ERROR, "loud");
    EXPECT_THAT(log.take(), ElementsAre("ERROR: loud"));
    const std::string longest(100000, 'x');
    logger().log(QNL_LOG_ERROR, "%s!", longest.c_str());
    EXPECT_THAT(log.take(), ElementsAre("ERROR: " + longest + "!"));
    qnl_set_log_level(QNL_LOG_VERBOSE);
    for (const int bad : {5, -1})
        EXPECT_EQ(qnl_set_log_level(static_cast<qnl_log_level>(bad)), QNL_ERROR_INVALID_VALUE);
    logger().log(QNL_LOG_VERBOSE, "the level stayed");
    const std::string refusal = "WARNING: Valid log levels are between 0 and 4";
    EXPECT_THAT(log.take(), ElementsAre(refusal, refusal, "VERBOSE: the level stayed"));
}

TEST(Exception, LogsItselfOnceAndKeepsItsTextWhenTheLogIsOff) {
    {
        log_capture log;
        const quenlis_exception failure(QNL_LOG_WARNING, QNL_ERROR_INVALID_VALUE, "100%% of %i", 3);
        const quenlis_exception copy = failure; // NOLINT: that a copy is silent is the point
        EXPECT_STREQ(copy.what(), "100% of 3");
        EXPECT_THAT(log.take(), ElementsAre("WARNING: 100% of 3"));
    }
    const quenlis_exception unseen(QNL_LOG_ERROR, QNL_ERROR_DATA_NULL, "%s", "nobody reads this");
    EXPECT_EQ(unseen.code(), QNL_ERROR_DATA_NULL);
    EXPECT_STREQ(unseen.what(), "nobody reads this");
}

} // namespace
