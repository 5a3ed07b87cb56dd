#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/vector_checks.h"
#include "dsp/vector_primitives.h"

namespace {

using namespace vector_checks;

constexpr float infinity = std::numeric_limits<float>::infinity();

bool aligned(const void* p) {
    return reinterpret_cast<std::uintptr_t>(p) % 64 == 0;
}

TEST(VectorAllocation, StorageIsAlignedAndWritableToItsEnd) {
    for (const int n : {1, 2, 7, 15, 16, 17, 480, 1025}) {
        float* const floats = qnl_malloc_32f(n);
        short* const shorts = qnl_malloc_16s(n);
        complex32f* const values = qnl_malloc_32fc(n);
        EXPECT_TRUE(aligned(floats) && aligned(shorts) && aligned(values));
        qnl_set(floats, 1.0F, n);
        qnl_zero(shorts, n);
        qnl_set(values, {1.0F, 2.0F}, n);
        EXPECT_EQ(values[n - 1].im, 2.0F);
        qnl_free(floats);
        qnl_free(shorts);
        qnl_free(values);
    }
}

TEST(VectorAllocation, RequestsForNothingOrTooMuchGiveNull) {
    for (const int n : {0, -1, INT_MIN}) {
        EXPECT_EQ(qnl_malloc_32f(n), nullptr);
        EXPECT_EQ(qnl_malloc_16s(n), nullptr);
        EXPECT_EQ(qnl_malloc_32fc(n), nullptr);
    }
    EXPECT_EQ(qnl_malloc_32f(536870912), nullptr); // 2147483648 bytes
    EXPECT_EQ(qnl_malloc_16s(1073741824), nullptr);
    EXPECT_EQ(qnl_malloc_32fc(268435456), nullptr);
    EXPECT_EQ(qnl_malloc_32f(INT_MAX), nullptr);
    qnl_free(nullptr);
}

TEST(VectorAllocation, OwnersHoldZerosAndRefuseWhatCannotBeHad) {
    const qnl_buffer_32f floats = qnl_make_buffer_32f(100);
    const qnl_buffer_16s shorts = qnl_make_buffer_16s(100);
    const qnl_buffer_32fc values = qnl_make_buffer_32fc(100);
    EXPECT_EQ(qnl_max(floats.get(), 100), 0.0F);
    EXPECT_EQ(shorts[99], 0);
    EXPECT_EQ(values[99].im, 0.0F);
    EXPECT_EQ(qnl_make_buffer_32f(0), nullptr);
    EXPECT_EQ(qnl_make_buffer_16s(-4), nullptr);
    EXPECT_THROW(qnl_make_buffer_32fc(INT_MAX), std::bad_alloc);
}

TEST(VectorPrimitives, SubtractAndDivideTakeTheFirstOperandAway) {
    const float one = 1.0F;
    const float three = 3.0F;
    const float two = 2.0F;
    const float six = 6.0F;
    float d = 0.0F;
    qnl_subtract(&one, &three, &d, 1);
    EXPECT_EQ(d, 2.0F);
    qnl_divide(&two, &six, &d, 1);
    EXPECT_EQ(d, 3.0F);
    const complex32f divisor = {0.0F, 2.0F};
    complex32f x = {6.0F, 4.0F};
    qnl_divide_I(&divisor, &x, 1);
    EXPECT_EQ(x.re, 2.0F);
    EXPECT_EQ(x.im, -3.0F);
}

TEST(VectorPrimitives, DivisionByAZeroConstantLeavesTheDestination) {
    const std::vector<float> a = {1.0F, 2.0F};
    std::vector<float> d = {7.0F, 8.0F};
    const std::vector<float> before = d;
    qnl_divideC(a.data(), d.data(), 0.0F, 2);
    qnl_divideC_I(d.data(), -0.0F, 2);
    EXPECT_EQ(d, before);
    const complex32f z = {1.0F, 2.0F};
    complex32f w = {7.0F, 8.0F};
    qnl_divideC(&z, &w, {0.0F, -0.0F}, 1);
    qnl_divideC_I(&w, {0.0F, 0.0F}, 1);
    EXPECT_EQ(w.re, 7.0F);
    EXPECT_EQ(w.im, 8.0F);
    qnl_divideC(&z, &w, {0.0F, 1.0F}, 1); // half a zero is a number
    EXPECT_EQ(w.re, 2.0F);
    EXPECT_EQ(w.im, -1.0F);
}

TEST(VectorPrimitives, ZeroesShortsAndDoubles) {
    std::vector<short> shorts(9, 5);
    std::vector<double> doubles(9, 5.0);
    qnl_zero(shorts.data(), 8);
    qnl_zero(doubles.data(), 8);
    EXPECT_EQ(shorts, (std::vector<short>{0, 0, 0, 0, 0, 0, 0, 0, 5}));
    EXPECT_EQ(doubles, (std::vector<double>{0, 0, 0, 0, 0, 0, 0, 0, 5}));
    const std::vector<short> source = {1, 2, 3};
    qnl_copy(source.data(), shorts.data(), 2);
    EXPECT_EQ(shorts[1], 2);
    EXPECT_EQ(shorts[2], 0);
}

TEST(VectorPrimitives, MovesOverlapEitherWay) {
    std::vector<float> x = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    qnl_move(x.data(), x.data() + 3, 7);
    EXPECT_EQ(x, (std::vector<float>{0, 1, 2, 0, 1, 2, 3, 4, 5, 6}));
    qnl_move(x.data() + 3, x.data(), 7);
    EXPECT_EQ(x, (std::vector<float>{0, 1, 2, 3, 4, 5, 6, 4, 5, 6}));
}

TEST(VectorPrimitives, ShiftMovesDownAndClearsTheEnd) {
    const std::vector<float> start = {1, 2, 3, 4, 5};
    const auto shifted = [&](int shift) {
        std::vector<float> x = start;
        qnl_shift_and_clear(x.data(), shift, 4);
        return x;
    };
    EXPECT_EQ(shifted(1), (std::vector<float>{2, 3, 4, 0, 5}));
    EXPECT_EQ(shifted(3), (std::vector<float>{4, 0, 0, 0, 5}));
    for (const int all : {4, 5, INT_MAX})
        EXPECT_EQ(shifted(all), (std::vector<float>{0, 0, 0, 0, 5}));
    for (const int none : {0, -1, INT_MIN})
        EXPECT_EQ(shifted(none), start);
    complex32f z[] = {{1, 2}, {3, 4}, {5, 6}};
    qnl_shift_and_clear(z, 2, 3);
    EXPECT_EQ(z[0].im, 6.0F);
    EXPECT_EQ(z[1].re, 0.0F);
    EXPECT_EQ(z[2].im, 0.0F);
}

TEST(VectorPrimitives, ReductionsFindMeanAndExtremes) {
    std::vector<float> a(1000);
    std::iota(a.begin(), a.end(), -300.0F);
    on_every_target([&](const char* target) {
        EXPECT_EQ(qnl_mean(a.data(), 1000), 199.5F) << target; // whole numbers: no order rounds
        for (int n = 1; n <= longest_count; ++n) {
            EXPECT_EQ(qnl_max(a.data(), n), a[static_cast<std::size_t>(n) - 1]) << target;
            EXPECT_EQ(qnl_min(a.data() + n, n), a[static_cast<std::size_t>(n)]) << target;
            EXPECT_FLOAT_EQ(qnl_mean(a.data(), n), -300.0F + static_cast<float>(n - 1) / 2.0F) << target;
        }
    });
}

TEST(VectorPrimitives, ReductionsPassOverNaN) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    std::vector<float> a(70, -4.0F);
    on_every_target([&](const char*) {
        for (std::size_t i = 0; i + 1 < a.size(); ++i) {
            std::vector<float> b = a;
            b[i] = nan;
            b[i + 1] = -3.0F;
            EXPECT_EQ(qnl_max(b.data(), 70), -3.0F);
            EXPECT_EQ(qnl_min(b.data(), 70), -4.0F);
            EXPECT_TRUE(std::isnan(qnl_mean(b.data(), 70)));
        }
        EXPECT_EQ(qnl_max(&nan, 1), -infinity);
        EXPECT_EQ(qnl_min(&nan, 1), infinity);
    });
    EXPECT_EQ(qnl_mean(nullptr, 3), 0.0F);
    EXPECT_EQ(qnl_max(a.data(), 0), 0.0F);
    EXPECT_EQ(qnl_min(a.data(), -1), 0.0F);
}

TEST(VectorDecibels, FollowTheirFormulas) {
    const std::vector<complex32f> z = {{3.0F, 4.0F}, {0.0F, 0.0F}, {-1.0F, 0.0F}};
    const std::vector<float> a = {10.0F, -0.1F, 0.0F};
    std::vector<float> d(3);
    on_every_target([&](const char*) {
        qnl_mag_dB(z.data(), d.data(), 3);
        EXPECT_NEAR(d[0], 20.0 * std::log10(5.0), 1.0e-5);
        EXPECT_EQ(d[1], -infinity);
        EXPECT_EQ(d[2], 0.0F);
        qnl_mag_dB(a.data(), d.data(), 3);
        EXPECT_NEAR(d[0], 20.0F, 1.0e-5);
        EXPECT_NEAR(d[1], -20.0F, 1.0e-5);
        EXPECT_EQ(d[2], -infinity);
        qnl_linear_to_dB(a.data(), d.data(), 3);
        EXPECT_TRUE(std::isnan(d[1]));
        d = {100.0F, 1.0F, 0.5F};
        qnl_linear_to_power_dB_I(d.data(), 3);
        EXPECT_NEAR(d[0], 20.0F, 1.0e-5);
        EXPECT_EQ(d[1], 0.0F);
        EXPECT_NEAR(d[2], -3.0103F, 1.0e-5);
        d = {20.0F, -6.0F, 0.0F};
        qnl_dB_to_linear_I(d.data(), 3);
        EXPECT_EQ(d[0], 10.0F);
        EXPECT_FLOAT_EQ(d[1], 0.50118723F);
        EXPECT_EQ(d[2], 1.0F);
    });
    EXPECT_FLOAT_EQ(lin2dB(10.0F), 20.0F);
    EXPECT_FLOAT_EQ(dB2lin(20.0F), 10.0F);
    EXPECT_EQ(lin2dB(1.0F), 0.0F);
    EXPECT_EQ(dB2lin(0.0F), 1.0F);
}

TEST(VectorDecibels, PowerSpectrumOfAFullScaleBinIsZero) {
    for (const int n : {256, 512, 960, 2048}) {
        std::vector<complex32f> z(static_cast<std::size_t>(n), {static_cast<float>(n), 0.0F});
        z[1] = {0.0F, static_cast<float>(n) / 10.0F};
        std::vector<float> d(z.size());
        qnl_power_spectrum_dB(z.data(), d.data(), n);
        EXPECT_NEAR(d[0], 0.0F, 1.0e-6);
        EXPECT_NEAR(d[1], -20.0F, 1.0e-5);
    }
}

TEST(VectorDecibels, NullSourcesLeaveTheDestination) {
    float d = 5.0F;
    qnl_mag_dB(static_cast<const float*>(nullptr), &d, 1);
    qnl_mag_dB(static_cast<const complex32f*>(nullptr), &d, 1);
    qnl_linear_to_dB(nullptr, &d, 1);
    qnl_dB_to_linear(nullptr, &d, 1);
    qnl_power_spectrum_dB(nullptr, &d, 1);
    EXPECT_EQ(d, 5.0F);
}

TEST(HannWindow, IsSymmetricWithZeroEnds) {
    on_every_target([](const char* target) {
        for (const int n : {3, 4, 5, 256, 257, 1024}) {
            std::vector<float> x(static_cast<std::size_t>(n), 1.0F);
            qnl_hann_window_I(x.data(), n);
            EXPECT_EQ(x.front(), 0.0F);
            EXPECT_EQ(x.back(), 0.0F);
            for (std::size_t k = 0; k < x.size(); ++k) {
                EXPECT_EQ(x[k], x[x.size() - 1 - k]) << target << ", n " << n << ", index " << k;
                const double angle = 2.0 * 3.14159265358979323846 * static_cast<double>(k) / (n - 1);
                EXPECT_NEAR(x[k], 0.5 - 0.5 * std::cos(angle), 6.0e-8);
            }
        }
    });
}

TEST(HannWindow, SparesShortBlocksAndTheMiddleOfThree) {
    std::vector<float> x = {3.0F, 5.0F, 7.0F};
    qnl_hann_window_I(x.data(), 2);
    qnl_hann_window_I(x.data(), 1);
    EXPECT_EQ(x, (std::vector<float>{3.0F, 5.0F, 7.0F}));
    qnl_hann_window_I(x.data(), 3);
    EXPECT_EQ(x, (std::vector<float>{0.0F, 5.0F, 0.0F}));
}

TEST(VectorScalars, LargerAndSmallerGiveTheSecondForNaN) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(max_float(1.0F, 2.0F), 2.0F);
    EXPECT_EQ(min_float(1.0F, 2.0F), 1.0F);
    EXPECT_EQ(max_float(nan, 2.0F), 2.0F);
    EXPECT_EQ(min_float(nan, 2.0F), 2.0F);
    EXPECT_TRUE(std::isnan(max_float(1.0F, nan)));
    EXPECT_TRUE(std::isnan(min_float(1.0F, nan)));
}

TEST(VectorScalars, PowersOfTwo) {
    for (const int n : {1, 2, 512, 1 << 30, INT_MIN})
        EXPECT_EQ(check_power_of_2(n), 1) << n;
    for (const int n : {0, 3, 480, -1, INT_MAX})
        EXPECT_EQ(check_power_of_2(n), 0) << n;
    EXPECT_EQ(next_power_of_2(1), 1);
    EXPECT_EQ(next_power_of_2(480), 512);
    EXPECT_EQ(next_power_of_2(513), 1024);
    for (int n = 1; n <= 1 << 16; n *= 2)
        EXPECT_EQ(next_power_of_2(n), n);
    for (const int none : {0, -1, INT_MIN})
        EXPECT_EQ(next_power_of_2(none), 0);
    EXPECT_EQ(next_power_of_2((1 << 30) + 1), INT_MAX);
    EXPECT_EQ(next_power_of_2(INT_MAX), INT_MAX);
}

TEST(VectorScalars, SamplingRatesMustGiveWholeBlocks) {
    EXPECT_EQ(check_valid_sampling_rate(16000, 48000, 480), 1);
    EXPECT_EQ(check_valid_sampling_rate(44100, 48000, 480), 1);
    EXPECT_EQ(check_valid_sampling_rate(44100, 48000, 512), 0);
    EXPECT_EQ(check_valid_sampling_rate(0, 48000, 480), 1);
    EXPECT_EQ(check_valid_sampling_rate(INT_MAX, 48000, 1024), 0); // wraps to -1024
    EXPECT_EQ(check_valid_sampling_rate(1 << 30, 48000, 4), 1);    // wraps to 0
    EXPECT_EQ(check_valid_sampling_rate(INT_MIN, -1, 1), 1);
    EXPECT_EQ(check_valid_sampling_rate(16000, 0, 480), 0);
}

} // namespace
