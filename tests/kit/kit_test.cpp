// The tools of the tests do what they say.
#include "kit/audio.h"
#include "kit/words.h"

#include <cstdlib>
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
    escaped = new wide[3];
    delete[] static_cast<wide*>(escaped);
    { escaped = const_cast<char*>(std::string(1000, 'x').data()); }
    std::free(nullptr);
    EXPECT_EQ(heap.allocations(), 5U);
    EXPECT_EQ(heap.releases(), 5U);
    std::thread([] { escaped = new std::vector<std::string>(1000, std::string(100, 'x')); }).join();
    delete static_cast<std::vector<std::string>*>(escaped);
    EXPECT_LT(heap.allocations(), 100U) << "the record of the thread itself";
}

TEST(Compare, NamesTheFirstDifferenceAndTheError) {
    EXPECT_TRUE(same_bits<float>({1.0F, not_a_number}, {1.0F, not_a_number}));
    EXPECT_FALSE(same_bits<float>({1.0F, 2.0F}, {1.0F}));
    EXPECT_THAT(same_bits<float>({1.0F, 0.0F, 5.0F}, {1.0F, -0.0F, 6.0F}).message(),
                HasSubstr("index 1 of 3"));

    const samples expected(100, 0.5F);
    samples actual(100, 0.505F);
    actual[0] = 0.5F;
    EXPECT_TRUE(error_below(expected, actual, -40.0));
    EXPECT_THAT(error_below(expected, actual, -40.1).message(),
                ContainsRegex("index 1 of 100: 0.5 expected, not 0.5.*; error -40.0"));
    EXPECT_TRUE(error_below({0.0F}, {0.0F}, -300.0));
    for (const auto& wrong : {std::vector{0.1F}, {not_a_number}, {0.0F, 0.0F}})
        EXPECT_FALSE(error_below({0.0F}, wrong, 300.0));
}

TEST(Signals, WordsRepeatAtTheirPitchAndPause) {
    const spoken_words said = words(96000, 120.0, 3);
    EXPECT_FLOAT_EQ(peak(said.samples), 0.3F);
    EXPECT_LT(peak(part(said.samples, 33000, 40000)), 1e-5F) << "a pause";
    EXPECT_EQ(said.pitch[35000 / 480], 0.0);
    const std::size_t vowel = 15360;
    EXPECT_NEAR(said.pitch[vowel / 480], 120.0, 18.0);
    const samples later = part(said.samples, vowel + 300, vowel + 2000);
    const auto period = 300 + find_delay(part(said.samples, vowel, vowel + 960), later, 250).value();
    EXPECT_NEAR(48000.0 / static_cast<double>(period), said.pitch[vowel / 480], 3.0);
}

TEST(Measurements, FindDelaysWhateverTheirGainAndTellTonesApart) {
    const samples reference = noise(2000, 3);
    EXPECT_EQ(find_delay(reference, planar(samples(480), noise(2000, 3, -0.1F)), 900), 480U);
    EXPECT_EQ(find_delay(reference, samples(2000), 900), std::nullopt);

    const samples high = sine(4800, 3000.0, 0.5F);
    const samples both = sum(sine(4800, 1000.0, 0.25F), high);
    EXPECT_NEAR(gain_db_at(both, high, 3000.0), 0.0, 1e-4);
    EXPECT_LT(gain_db_at(both, high, 1000.0), -80.0);
    EXPECT_NEAR(gain_db_at(sine(4800, 1000.0, 0.5F), both, 1000.0), -6.0206, 1e-4);
}

} // namespace
