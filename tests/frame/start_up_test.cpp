// What an output format must be, and what is derived from it.
#include "frame/common_object.h"
#include "kit/host.h"

#include <array>

namespace {

using testing::ElementsAre;

int code_of_start(qnl_library_configuration configuration) {
    int code = 1;
    qnl_handle const handle = qnl_initialize_library(nullptr, nullptr, configuration, &code);
    EXPECT_EQ(handle != nullptr, code == QNL_ERROR_NONE);
    if (handle != nullptr)
        qnl_destroy_library(handle);
    return code;
}

TEST(StartUp, AcceptsExactlyTheFormatsOfTheirPage) {
    const auto rows = test_kit::rows_of("docs/integration.md", R"(\n\| (\d+) \| (\d+ \(\d+\).*) \|)");
    ASSERT_EQ(rows.size(), 5U);
    for (const auto& row : rows) {
        const int hz = std::stoi(row[1]);
        std::string accepted;
        for (int frames = -2; frames <= 1100; ++frames) {
            if (code_of_start({hz, frames, 1, false, 3}) == QNL_ERROR_NONE)
                accepted += (accepted.empty() ? "" : ", ") + std::to_string(frames) + " (" +
                            std::to_string(frames * 48000 / hz) + ')';
        }
        EXPECT_EQ(accepted, row[2]) << hz;
    }
    for (const int hz : {44100, 0, -48000, 96000})
        EXPECT_EQ(code_of_start({hz, 480, 1, false, 3}), QNL_ERROR_SAMPLE_RATE);
    for (const int frames : {std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_EQ(code_of_start({8000, frames, 1, false, 3}), QNL_ERROR_DATA_LENGTH);
}

TEST(StartUp, NamesTheFirstFaultAndProposesBlocks) {
    test_kit::log_capture log;
    EXPECT_EQ(code_of_start({44100, 1, 3, false, 9}), QNL_ERROR_SAMPLE_RATE);
    EXPECT_EQ(code_of_start({16000, 170, 3, false, 9}), QNL_ERROR_DATA_LENGTH);
    EXPECT_EQ(code_of_start({16000, 160, 3, false, 9}), QNL_ERROR_NUM_CHANNELS);
    EXPECT_EQ(code_of_start({16000, 160, 2, false, 6}), QNL_ERROR_SPATIAL_QUALITY);
    EXPECT_EQ(code_of_start({16000, 160, 2, false, 0}), QNL_ERROR_SPATIAL_QUALITY);
    EXPECT_THAT(
        log.take(),
        ElementsAre(
            "ERROR: You provided 44100 but you must choose a sampling rate of either 8000, 16000, 24000, "
            "32000, or 48000",
            "ERROR: You provided 170 must choose an output number of frames of either 10 or 20 milliseconds. "
            "Based on your chosen sampling rate of 16000 this would be either 160 frames or 320 frames.",
            "ERROR: You provided 3 but you must choose either 1 or 2 for output number of channels",
            "ERROR: You provided 6 but you must choose a spatial quality between 1 and 5",
            "ERROR: You provided 0 but you must choose a spatial quality between 1 and 5"));
}

TEST(StartUp, DerivesTheSizesOfASource) {
    const std::vector<std::pair<qnl_library_configuration, std::array<int32_t, 4>>> table = {
        {{48000, 480, 2, false, 3}, {2048, 1024, 2048, 4}},
        {{16000, 320, 2, false, 1}, {512, 2048, 1024, 1}},
        {{48000, 512, 2, false, 1}, {512, 1024, 512, 1}},
        {{32000, 683, 2, false, 5}, {8192, 2048, 8192, 8}},
        {{8000, 160, 2, false, 4}, {4096, 2048, 4096, 4}},
        {{24000, 512, 2, false, 2}, {1024, 2048, 1024, 1}}};
    for (const auto& [configuration, derived] : table) {
        const auto common = quenlis_common_object::derive(configuration);
        EXPECT_THAT(derived, ElementsAre(common.ir_length, common.fft_size, common.filter_length,
                                         common.number_partitions));
    }
}

TEST(StartUp, GivesTheConfigurationBackAndToleratesANullCode) {
    qnl_handle const handle = qnl_initialize_library(nullptr, nullptr, {24000, 256, 1, true, 5}, nullptr);
    EXPECT_THAT(qnl_get_library_configuration(handle), testing::FieldsAre(24000, 256, 1, true, 5));
    qnl_destroy_library(handle);
    EXPECT_EQ(qnl_initialize_library(nullptr, nullptr, {1, 1, 1, false, 1}, nullptr), nullptr);
}

TEST(StartUp, MayHappenOnSeveralThreadsAtOnce) {
    const auto start = [] { EXPECT_EQ(code_of_start({48000, 480, 2, false, 3}), QNL_ERROR_NONE); };
    std::thread threads[] = {std::thread(start), std::thread(start), std::thread(start), std::thread(start)};
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace
