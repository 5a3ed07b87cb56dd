#include "dsp/circular_buffer.h"

#include "kit/audio.h"

namespace {

std::vector<float> rising(int n, float first) {
    std::vector<float> values(static_cast<std::size_t>(n));
    std::iota(values.begin(), values.end(), first);
    return values;
}

TEST(CircularBuffer, FullRingIsFullByCounterAndEmptyByDistance) {
    circular_buffer ring(1, 4);
    std::vector<float> block = rising(4, 1.0F);
    EXPECT_EQ(ring.write_BLOCK(block.data(), 4), 4);
    EXPECT_EQ(ring.calc_amount_data_circ_buf(), 0);
    EXPECT_EQ(ring.calc_space_circ_buf(), 4);
    EXPECT_EQ(ring.write_BLOCK(block.data(), 1), 0);
    const std::vector<float> more = rising(4, 11.0F);
    const float* const pointers[] = {more.data()};
    EXPECT_EQ(ring.write_POINTER(pointers, 4), 4); // by the distance there is room
    EXPECT_EQ(ring.read_BLOCK(block.data(), 4), 4);
    EXPECT_EQ(block, more);
}

TEST(CircularBuffer, BlocksAndPointersGiveTheSameFramesAlsoAcrossTheWrap) {
    circular_buffer ring(3, 16);
    std::vector<float> out(30);
    float* first_half[] = {&out[0], &out[10], &out[20]};
    float* second_half[] = {&out[5], &out[15], &out[25]};
    for (int round = 0; round < 8; ++round) {
        const std::vector<float> in = rising(30, static_cast<float>(100 * round));
        EXPECT_EQ(ring.write_BLOCK(in.data(), 10), 10);
        EXPECT_EQ(ring.calc_amount_data_circ_buf(), 10);
        EXPECT_EQ(ring.calc_space_circ_buf(), 6);
        EXPECT_EQ(ring.read_POINTER(first_half, 5), 5);
        EXPECT_EQ(ring.read_POINTER(second_half, 5), 5);
        EXPECT_EQ(out, in);
        std::vector<float> back(30);
        EXPECT_EQ(ring.write_POINTER(first_half, 5), 5);
        EXPECT_EQ(ring.write_POINTER(second_half, 5), 5);
        EXPECT_EQ(ring.read_BLOCK(back.data(), 10), 10);
        EXPECT_EQ(back, in);
    }
}

TEST(CircularBuffer, CountsThatDoNotFitOrAreBelowOneAndNullMoveNothing) {
    circular_buffer ring(2, 8);
    std::vector<float> block = rising(8, 1.0F);
    float* pointers[] = {&block[0], &block[4]};
    float* half_null[] = {&block[0], nullptr};
    ASSERT_EQ(ring.write_BLOCK(block.data(), 4), 4);
    const auto moved = [&](float* whole, float** parts, int n) {
        return std::vector{ring.write_BLOCK(whole, n), ring.read_BLOCK(whole, n),
                           ring.write_POINTER(parts, n), ring.read_POINTER(parts, n)};
    };
    for (const int too_many : {5, INT_MAX})
        EXPECT_EQ(moved(block.data(), pointers, too_many), std::vector(4, 0));
    for (const int n : {0, -1, INT_MIN})
        EXPECT_EQ(moved(block.data(), pointers, n), std::vector(4, n));
    for (const int n : {1, 0, -1})
        for (float** const parts : {static_cast<float**>(nullptr), half_null})
            EXPECT_EQ(moved(nullptr, parts, n), std::vector(4, 0));
    EXPECT_EQ(block, rising(8, 1.0F));
    EXPECT_EQ(ring.calc_amount_data_circ_buf(), 4);
    EXPECT_EQ(ring.write_BLOCK(block.data(), 4), 4); // room by the counter is what it was
}

TEST(CircularBufferDeathTest, SizesThatAreNoPowerOfTwoEndTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const int size : {0, 480, -8})
        EXPECT_DEATH(circular_buffer(1, size), "") << size;
}

} // namespace
