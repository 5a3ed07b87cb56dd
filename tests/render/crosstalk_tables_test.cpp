#include "render/crosstalk_tables.h"

#include "kit/audio.h"
#include "kit/documents.h"

#include <complex>
#include <cstring>

namespace {

using complex = std::complex<double>;

double energy(const float* taps, int count) {
    return std::inner_product(taps, taps + count, taps, 0.0);
}

int main_tap(const float* taps) {
    const auto weaker = [](float a, float b) { return std::abs(a) < std::abs(b); };
    return static_cast<int>(std::max_element(taps, taps + crosstalk_taps, weaker) - taps);
}

// The tap around which the energy lies.
double centre(const float* taps) {
    double sum = 0.0;
    for (int i = 0; i < crosstalk_taps; i++)
        sum += i * static_cast<double>(taps[i]) * taps[i];
    return sum / energy(taps, crosstalk_taps);
}

complex response(const float* taps, double hertz) {
    complex sum = 0.0;
    for (int i = 0; i < crosstalk_taps; i++)
        sum += static_cast<double>(taps[i]) * std::polar(1.0, -2.0 * M_PI * hertz / 48000.0 * i);
    return sum;
}

// In dB, how much more of a channel reaches its own ear than the other one, where the head hardly shadows: the far
// ear of a sphere of 87.5 mm hears 0.9 of the near one's pressure, by the way around it later.
double separation(int row, double hertz) {
    const double azimuth = row * M_PI / 180.0;
    const double delay = 0.0875 / 343.0 * (azimuth + std::sin(azimuth));
    const complex far = std::polar(0.9, -2.0 * M_PI * hertz * delay);
    const complex same = response(ltol_speaker_irs[row], hertz);
    const complex cross = response(ltor_speaker_irs[row], hertz);
    return 20.0 * std::log10(std::abs(same + far * cross) / std::abs(cross + far * same));
}

TEST(crosstalk_tables, left_mirrors_right_and_the_narrowest_rows_are_one) {
    EXPECT_EQ(std::memcmp(ltol_speaker_irs, rtor_speaker_irs, sizeof ltol_speaker_irs), 0);
    EXPECT_EQ(std::memcmp(ltor_speaker_irs, rtol_speaker_irs, sizeof ltor_speaker_irs), 0);
    EXPECT_NE(std::memcmp(ltol_speaker_irs, ltor_speaker_irs, sizeof ltor_speaker_irs), 0);
    for (const auto* table : {ltol_speaker_irs, ltor_speaker_irs}) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(table) % 64, 0U);
        EXPECT_EQ(std::memcmp(table[0], table[2], sizeof table[0]), 0);
        EXPECT_EQ(std::memcmp(table[1], table[2], sizeof table[1]), 0);
        EXPECT_NE(std::memcmp(table[3], table[2], sizeof table[3]), 0);
    }
}

TEST(crosstalk_tables, every_wider_angle_needs_more_of_the_same_side_and_less_and_later_of_the_other) {
    for (int row = 3; row < crosstalk_rows; row++) {
        SCOPED_TRACE(row);
        const float* same = ltol_speaker_irs[row];
        const float* cross = ltor_speaker_irs[row];
        EXPECT_GT(energy(same, crosstalk_taps), energy(ltol_speaker_irs[row - 1], crosstalk_taps));
        EXPECT_LT(energy(cross, crosstalk_taps), energy(ltor_speaker_irs[row - 1], crosstalk_taps));
        EXPECT_GT(same[977], ltol_speaker_irs[row - 1][977]);
        EXPECT_GE(main_tap(cross), main_tap(ltor_speaker_irs[row - 1]));
        // From there on the far ear lies right behind the head.
        if (row <= 80) {
            EXPECT_GT(centre(cross), centre(ltor_speaker_irs[row - 1]));
        }
    }
    EXPECT_EQ(main_tap(ltor_speaker_irs[2]), 978);
    EXPECT_EQ(main_tap(ltor_speaker_irs[89]), 1004);
    EXPECT_NEAR(ltol_speaker_irs[15][977], 0.418, 0.025);
    EXPECT_NEAR(ltol_speaker_irs[45][977], 0.535, 0.025);
    EXPECT_NEAR(ltol_speaker_irs[89][977], 0.605, 0.045);
}

TEST(crosstalk_tables, each_filter_lies_around_its_main_tap_and_fills_its_row) {
    for (const auto* table : {ltol_speaker_irs, ltor_speaker_irs})
        for (int row = 0; row < crosstalk_rows; row++) {
            SCOPED_TRACE(row);
            const float* taps = table[row];
            EXPECT_EQ(main_tap(ltol_speaker_irs[row]), 977);
            EXPECT_LT(main_tap(taps), 1024);
            const double early = energy(taps, 1024) / energy(taps, crosstalk_taps);
            EXPECT_GT(early, 0.77);
            EXPECT_LT(early, 0.98);
            EXPECT_NE(taps[0], 0.0F);
            EXPECT_NE(taps[crosstalk_taps - 1], 0.0F);
        }
}

TEST(crosstalk_tables, keep_the_channels_apart_where_it_matters) {
    for (const int row : {10, 30, 45, 89})
        for (const double hertz : {250.0, 500.0})
            EXPECT_GT(separation(row, hertz), 11.0) << "row " << row << ", " << hertz << " Hz";
    // Of the head they are designed for; the tables and this page are held to the design by its own test.
    const auto least = test_kit::rows_of("data/README.md", R"(rows from 10 on, 500 to 6000 Hz: (\S+))");
    EXPECT_GT(std::stod(least.at(0)[1]), 25.0);
}

} // namespace
