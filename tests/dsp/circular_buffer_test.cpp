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

TEST(CircularBuffer, BlocksAcrossTheWrapComeOutWholeForEveryChannel) {
    constexpr int channels = 3;
    constexpr int frames = 5;
    circular_buffer ring(channels, 16);
    for (int round = 0; round < 40; ++round) {
        const std::vector<float> in = rising(channels * 2 * frames, static_cast<float>(100 * round));
        ASSERT_EQ(ring.write_BLOCK(in.data(), 2 * frames), 2 * frames);
        for (const int half : {0, 1}) {
            std::vector<float> out(channels * frames);
            ASSERT_EQ(ring.read_BLOCK(out.data(), frames), frames);
            for (int channel = 0; channel < channels; ++channel)
                ASSERT_TRUE(std::equal(&out[channel * frames], &out[channel * frames] + frames,
                                       &in[(2 * channel + half) * frames]));
        }
    }
}

TEST(CircularBuffer, PointersAndBlocksHoldTheSameFramesAndMoveAllOrNothing) {
    circular_buffer ring(2, 8);
    const std::vector<float> left = rising(6, 1.0F);
    const std::vector<float> right = rising(6, 101.0F);
    const float* in[] = {left.data(), right.data()};
    EXPECT_EQ(ring.write_POINTER(in, 6), 6);
    EXPECT_EQ(ring.calc_space_circ_buf(), 2);
    std::vector<float> block(4);
    for (const int too_many : {3, INT_MAX}) {
        EXPECT_EQ(ring.write_POINTER(in, too_many), 0);
        EXPECT_EQ(ring.write_BLOCK(left.data(), too_many), 0);
    }
    for (const int too_many : {7, INT_MAX})
        EXPECT_EQ(ring.read_BLOCK(block.data(), too_many), 0);
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
    float* half_null[] = {block.data(), nullptr};
    ASSERT_EQ(ring.write_BLOCK(block.data(), 4), 4);
    const auto moved = [&](float* whole, float** parts, int n) {
        return std::vector{ring.write_BLOCK(whole, n), ring.read_BLOCK(whole, n),
                           ring.write_POINTER(parts, n), ring.read_POINTER(parts, n)};
    };
    for (const int n : {0, -1, INT_MIN})
        EXPECT_EQ(moved(block.data(), pointers, n), std::vector(4, n));
    for (const int n : {1, 0, -1}) {
        EXPECT_EQ(moved(nullptr, nullptr, n), std::vector(4, 0));
        EXPECT_EQ(moved(nullptr, half_null, n), std::vector(4, 0));
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
