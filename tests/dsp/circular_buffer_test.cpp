#include "dsp/circular_buffer.h"

#include <climits>
#include <cstddef>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

namespace {

std::vector<float> rising(int n, float first) {
    std::vector<float> values(static_cast<std::size_t>(n));
    std::iota(values.begin(), values.end(), first);
    return values;
}

TEST(CircularBuffer, FullRingIsFullByCounterAndEmptyByDistance) {
    circular_buffer ring(1, 4);
    std::vector<float> in = rising(4, 1.0F);
    const std::vector<float> more = rising(3, 11.0F);
    EXPECT_EQ(ring.calc_space_circ_buf(), 4);
    EXPECT_EQ(ring.write_BLOCK(in.data(), 4), 4);
    EXPECT_EQ(ring.calc_amount_data_circ_buf(), 0);
    EXPECT_EQ(ring.calc_space_circ_buf(), 4);
    EXPECT_EQ(ring.write_BLOCK(in.data(), 1), 0);
    const float* pointers[] = {more.data()};
    EXPECT_EQ(ring.write_POINTER(pointers, 3), 3); // by the distance there is room
    EXPECT_EQ(ring.calc_amount_data_circ_buf(), 3);
    EXPECT_EQ(ring.read_BLOCK(in.data(), 4), 4);
    EXPECT_EQ(in, (std::vector<float>{11, 12, 13, 4}));
}

TEST(CircularBuffer, TransfersAreAllOrNothing) {
    circular_buffer ring(1, 8);
    const std::vector<float> in = rising(8, 1.0F);
    std::vector<float> out(8, -1.0F);
    EXPECT_EQ(ring.write_BLOCK(in.data(), 5), 5);
    for (const int too_many : {4, INT_MAX})
        EXPECT_EQ(ring.write_BLOCK(in.data(), too_many), 0);
    for (const int too_many : {6, INT_MAX})
        EXPECT_EQ(ring.read_BLOCK(out.data(), too_many), 0);
    EXPECT_EQ(ring.calc_amount_data_circ_buf(), 5);
    EXPECT_EQ(ring.calc_space_circ_buf(), 3);
    EXPECT_EQ(ring.read_BLOCK(out.data(), 5), 5);
    EXPECT_EQ(out, (std::vector<float>{1, 2, 3, 4, 5, -1, -1, -1}));
}

TEST(CircularBuffer, BlocksAcrossTheWrapComeOutWholeForEveryChannel) {
    constexpr int channels = 3;
    constexpr int frames = 5;
    circular_buffer ring(channels, 16);
    for (int round = 0; round < 40; ++round) {
        const std::vector<float> one = rising(channels * frames, static_cast<float>(100 * round));
        const std::vector<float> two = rising(channels * frames, static_cast<float>(100 * round + 50));
        ASSERT_EQ(ring.write_BLOCK(one.data(), frames), frames);
        ASSERT_EQ(ring.write_BLOCK(two.data(), frames), frames);
        std::vector<float> expected;
        for (int channel = 0; channel < channels; ++channel)
            for (const auto* block : {&one, &two})
                expected.insert(expected.end(), block->begin() + channel * frames,
                                block->begin() + (channel + 1) * frames);
        std::vector<float> out(expected.size());
        ASSERT_EQ(ring.read_BLOCK(out.data(), 2 * frames), 2 * frames);
        ASSERT_EQ(out, expected);
    }
}

TEST(CircularBuffer, PointersAndBlocksHoldTheSameFrames) {
    circular_buffer ring(2, 8);
    const std::vector<float> left = rising(6, 1.0F);
    const std::vector<float> right = rising(6, 101.0F);
    const float* in[] = {left.data(), right.data()};
    EXPECT_EQ(ring.write_POINTER(in, 6), 6);
    EXPECT_EQ(ring.write_POINTER(in, 3), 0);
    std::vector<float> block(4);
    EXPECT_EQ(ring.read_BLOCK(block.data(), 2), 2);
    EXPECT_EQ(block, (std::vector<float>{1, 2, 101, 102}));
    std::vector<float> left_out(4);
    std::vector<float> right_out(4);
    float* out[] = {left_out.data(), right_out.data()};
    EXPECT_EQ(ring.read_POINTER(out, 5), 0);
    EXPECT_EQ(ring.read_POINTER(out, 4), 4);
    EXPECT_EQ(left_out, rising(4, 3.0F));
    EXPECT_EQ(right_out, rising(4, 103.0F));
    EXPECT_EQ(ring.write_BLOCK(rising(16, 1.0F).data(), 8), 8); // the counter was kept too
}

TEST(CircularBuffer, CountsBelowOneAndNullMoveNothing) {
    circular_buffer ring(2, 8);
    std::vector<float> block = rising(8, 1.0F);
    float* pointers[] = {block.data(), block.data() + 4};
    const float* half_null[] = {block.data(), nullptr};
    ASSERT_EQ(ring.write_BLOCK(block.data(), 4), 4);
    for (const int n : {0, -1, INT_MIN}) {
        EXPECT_EQ(ring.write_BLOCK(block.data(), n), n);
        EXPECT_EQ(ring.read_BLOCK(block.data(), n), n);
        EXPECT_EQ(ring.write_POINTER(pointers, n), n);
        EXPECT_EQ(ring.read_POINTER(pointers, n), n);
    }
    for (const int n : {1, 0, -1}) {
        EXPECT_EQ(ring.write_BLOCK(nullptr, n), 0);
        EXPECT_EQ(ring.read_BLOCK(nullptr, n), 0);
        EXPECT_EQ(ring.read_POINTER(nullptr, n), 0);
        EXPECT_EQ(ring.write_POINTER(half_null, n), 0);
    }
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
