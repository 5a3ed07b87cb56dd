// The tools of the tests do what they say.
#include "kit/allocation_counter.h"
#include "kit/compare.h"
#include "kit/log_capture.h"
#include "kit/signals.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <limits>
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

TEST(AllocationCounter, SeesEveryKindOfHeapCallOfItsOwnThread) {
    const allocation_counter heap;
    escaped = std::malloc(10);
    escaped = std::realloc(escaped, 2000);
    std::free(escaped);
    escaped = std::calloc(3, 5);
    std::free(escaped);
    escaped = new char[100];
    delete[] static_cast<char*>(escaped);
    escaped = new wide[3];
    delete[] static_cast<wide*>(escaped);
    { escaped = const_cast<char*>(std::string(1000, 'x').data()); }
    std::free(nullptr);
    EXPECT_EQ(heap.allocations(), 6U);
    EXPECT_EQ(heap.releases(), 6U);
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
    for (const auto& wrong : {std::vector{0.1F}, {not_a_number}, {0.0F, 0.0F}})
        EXPECT_FALSE(error_below({0.0F}, wrong, 300.0));
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
    EXPECT_NEAR(peak(noise(48000, 7, 0.5F)), 0.4995F, 0.0005F);
    EXPECT_FLOAT_EQ(noise(1, 1)[0], -0.165956F) << "a recorded reference made from this noise stays valid";
    EXPECT_THAT(sine(3, 12000.0, 0.5F), Pointwise(FloatNear(1e-7F), {0.0F, 0.5F, 0.0F}));
    const std::vector<float> speech = speech_like(96000, 5);
    const auto part = [&](int from, int to) { return std::vector<float>(&speech[from], &speech[to]); };
    EXPECT_FLOAT_EQ(peak(speech), 0.5F);
    EXPECT_LT(peak(part(37000, 47000)), 1e-5F) << "a pause";
    // Voiced: in the falling half of a syllable it resembles itself most after one period of the pitch.
    EXPECT_THAT(120 + find_delay(part(18000, 20000), part(18120, 22000), 660).value(),
                AllOf(Gt(48000U / 210U), Lt(48000U / 85U)));
}

TEST(Signals, WordsRepeatAtTheirPitchAndPause) {
    const spoken_words said = words(96000, 120.0, 3);
    const auto part = [&](std::size_t from, std::size_t to) {
        return std::vector<float>(said.samples.begin() + static_cast<std::ptrdiff_t>(from),
                                  said.samples.begin() + static_cast<std::ptrdiff_t>(to));
    };
    EXPECT_FLOAT_EQ(peak(said.samples), 0.3F);
    EXPECT_LT(peak(part(33000, 40000)), 1e-5F) << "a pause";
    EXPECT_EQ(said.pitch[35000 / 480], 0.0);
    const std::size_t vowel = 15360;
    EXPECT_NEAR(said.pitch[vowel / 480], 120.0, 18.0);
    const auto period =
        300 + find_delay(part(vowel, vowel + 960), part(vowel + 300, vowel + 2000), 250).value();
    EXPECT_NEAR(48000.0 / static_cast<double>(period), said.pitch[vowel / 480], 3.0);
}

TEST(Measurements, FindDelaysWhateverTheirGainAndTellTonesApart) {
    const std::vector<float> reference = noise(2000, 3);
    std::vector<float> delayed(480);
    for (const float value : reference)
        delayed.push_back(-0.1F * value);
    EXPECT_EQ(find_delay(reference, reference, 900), 0U);
    EXPECT_EQ(find_delay(reference, delayed, 900), 480U);
    EXPECT_EQ(find_delay(reference, std::vector<float>(2000), 900), std::nullopt);

    const std::vector<float> high = sine(4800, 3000.0, 0.5F);
    std::vector<float> both = sine(4800, 1000.0, 0.25F);
    for (std::size_t i = 0; i < both.size(); ++i)
        both[i] += high[i];
    EXPECT_NEAR(gain_db_at(both, high, 3000.0), 0.0, 1e-4);
    EXPECT_LT(gain_db_at(both, high, 1000.0), -80.0);
    EXPECT_NEAR(gain_db_at(sine(4800, 1000.0, 0.5F), both, 1000.0), -6.0206, 1e-4);
}

} // namespace
