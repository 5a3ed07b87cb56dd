// The tools of the tests do what they say.
#include "kit/allocation_counter.h"
#include "kit/compare.h"
#include "kit/log_capture.h"
#include "kit/signals.h"
#include "kit/temporary_directory.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <limits>
#include <new>
#include <stdexcept>
#include <thread>

namespace {

using namespace test_kit;
using namespace testing;

constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();

// Keeps the compiler from leaving out a pair of heap calls.
void* volatile escaped;

struct alignas(128) wide {
    float values[32];
};

TEST(AllocationCounter, SeesEveryKindOfHeapCall) {
    const allocation_counter heap;
    escaped = std::malloc(10);
    escaped = std::realloc(escaped, 2000);
    std::free(escaped);
    escaped = std::calloc(3, 5);
    std::free(escaped);
    escaped = new char[100];
    delete[] static_cast<char*>(escaped);
    escaped = new (std::nothrow) wide[3];
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(escaped) % alignof(wide), 0U);
    delete[] static_cast<wide*>(escaped);
    { escaped = const_cast<char*>(std::string(1000, 'x').data()); }
    std::free(nullptr);
    EXPECT_EQ(heap.allocations(), 6U);
    EXPECT_EQ(heap.releases(), 6U);
    try {
        throw 1;
    } catch (int) {
        EXPECT_EQ(heap.allocations(), 7U);
    }
}

TEST(AllocationCounter, SeesNothingOfOtherThreads) {
    const allocation_counter heap;
    std::thread([] {
        for (int i = 0; i < 1000; ++i) {
            escaped = std::malloc(10);
            std::free(escaped);
        }
    }).join();
    EXPECT_LT(heap.allocations(), 100U) << "the record of the thread itself";
}

TEST(Compare, NamesTheFirstDifferenceAndTheError) {
    EXPECT_TRUE(same_bits<float>({1.0F, not_a_number}, {1.0F, not_a_number}));
    EXPECT_FALSE(same_bits<float>({1.0F, 2.0F}, {1.0F}));
    const auto zeros = same_bits<float>({1.0F, 0.0F, 5.0F}, {1.0F, -0.0F, 6.0F});
    EXPECT_FALSE(zeros);
    EXPECT_THAT(zeros.message(), HasSubstr("index 1 of 3"));

    const std::vector<float> expected(100, 0.5F);
    std::vector<float> actual(100, 0.505F);
    actual[0] = 0.5F;
    EXPECT_TRUE(error_below(expected, actual, -40.0));
    const auto louder = error_below(expected, actual, -40.1);
    EXPECT_FALSE(louder);
    EXPECT_THAT(louder.message(), ContainsRegex("index 1 of 100: 0.5 expected, not 0.5.*; error -40.0"));
    EXPECT_TRUE(error_below({0.0F}, {0.0F}, -300.0));
    EXPECT_FALSE(error_below({0.0F}, {0.1F}, 300.0));
    EXPECT_FALSE(error_below({1.0F}, {not_a_number}, 300.0));
    EXPECT_FALSE(error_below({1.0F}, {1.0F, 1.0F}, 300.0));
}

TEST(LogCapture, CatchesLinesInOrderAndLeavesTheLogAsAtTheStart) {
    qnl_logger& logger = qnl_logger::get_logger();
    {
        log_capture log(QNL_LOG_DEBUG);
        logger.log(QNL_LOG_VERBOSE, "below the threshold");
        logger.log(QNL_LOG_DEBUG, "seat %d", 4);
        logger.log(QNL_LOG_ERROR, "no seat");
        EXPECT_THAT(log.take(), ElementsAre("DEBUG: seat 4", "ERROR: no seat"));
        EXPECT_THAT(log.take(), IsEmpty());
    }
    internal::CaptureStdout();
    logger.log(QNL_LOG_ERROR, "off");
    logger.set_enabled(true);
    logger.log(QNL_LOG_INFO, "below the first threshold");
    logger.set_enabled(false);
    std::fflush(stdout);
    EXPECT_EQ(internal::GetCapturedStdout(), "");
}

TEST(Signals, AreReproducibleAndFillTheirRange) {
    const std::vector<float> x = noise(48000, 7, 0.5F);
    EXPECT_FALSE(same_bits(x, noise(48000, 8, 0.5F)));
    EXPECT_NEAR(peak(x), 0.4995F, 0.0005F);
    EXPECT_FLOAT_EQ(noise(1, 1)[0], -0.165956F) << "a recorded reference made from this noise stays valid";
    EXPECT_THAT(sine(3, 12000.0, 0.5F), Pointwise(FloatNear(1e-7F), {0.0F, 0.5F, 0.0F}));
    EXPECT_NEAR(sine(80, 1000.0, 0.5F, 8000.0)[2], 0.5F, 1e-7);
    EXPECT_THAT(impulse(4, 2, 0.25F), ElementsAre(0.0F, 0.0F, 0.25F, 0.0F));
    EXPECT_THAT(planar({1.0F, 2.0F}, {3.0F, 4.0F}), ElementsAre(1.0F, 2.0F, 3.0F, 4.0F));
}

TEST(Signals, SpeechHasSyllablesPausesAndAVoice) {
    const std::vector<float> x = speech_like(96000, 5);
    EXPECT_TRUE(same_bits(x, speech_like(96000, 5)));
    const auto part = [&x](int from, int to) { return std::vector<float>(x.begin() + from, x.begin() + to); };
    EXPECT_FLOAT_EQ(peak(x), 0.5F);
    EXPECT_LT(peak(part(37000, 47000)), 1e-5F) << "a pause";
    EXPECT_GT(peak(part(16000, 20000)), 0.05F) << "a syllable";
    EXPECT_GT(peak(part(52000, 56000)), 0.05F) << "speech after the pause";
    // Voiced: in the falling half of a syllable it resembles itself most after one period of the pitch.
    EXPECT_THAT(120 + find_delay(part(18000, 20000), part(18120, 22000), 660).value(),
                AllOf(Gt(48000U / 210U), Lt(48000U / 85U)));
}

TEST(Measurements, FindADelayWhateverGainAndSign) {
    const std::vector<float> reference = noise(2000, 3);
    for (const std::size_t delay : {0U, 1U, 480U}) {
        std::vector<float> delayed(delay);
        for (const float value : reference)
            delayed.push_back(-0.1F * value);
        delayed.resize(2100);
        EXPECT_EQ(find_delay(reference, delayed, 900), delay);
    }
    EXPECT_EQ(find_delay(reference, std::vector<float>(2000), 900), std::nullopt);
}

TEST(Measurements, TellTheGainsOfTwoTonesApart) {
    const std::vector<float> high = sine(4800, 3000.0, 0.5F);
    std::vector<float> both = sine(4800, 1000.0, 0.25F);
    for (std::size_t i = 0; i < both.size(); ++i)
        both[i] += high[i];
    EXPECT_NEAR(gain_db_at(both, high, 3000.0), 0.0, 1e-4);
    EXPECT_LT(gain_db_at(both, high, 1000.0), -80.0);
    EXPECT_NEAR(gain_db_at(sine(4800, 1000.0, 0.5F), both, 1000.0), -6.0206, 1e-4);
}

TEST(TemporaryDirectory, KeepsBytesAsTheyAreAndLeavesNothingBehind) {
    std::string path;
    {
        const temporary_directory directory;
        EXPECT_NE(directory.path(), temporary_directory().path());
        path = directory.write("rooms.json", std::string("a\0\r\n\xff", 5));
        EXPECT_EQ(std::filesystem::file_size(path), 5U);
        EXPECT_THROW(directory.write("absent/file", ""), std::runtime_error);
    }
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(path).parent_path()));
}

} // namespace
