#include "dsp/filter.h"

#include "kit/audio.h"

namespace {

using namespace test_kit;

samples through(quenlis_filter& filter, samples x) {
    filter.process(x.data(), x.data(), static_cast<int>(x.size()));
    return x;
}

double gain_db(quenlis_biquad& filter, double hz) {
    filter.reset();
    const samples in = sine(48000, hz);
    return gain_db_at(part(in, 24000, 48000), part(through(filter, in), 24000, 48000), hz);
}

TEST(Filter, RunsItsDifferenceEquationAcrossBlocks) {
    const float a[] = {99.0F, -0.5F, 0.25F, 0.125F}; // the first is never read
    const float b[] = {1.0F, 2.0F, -1.0F, 0.5F};
    quenlis_filter filter(4, a, b);
    // Worked out by hand: powers of two, so exact.
    EXPECT_THAT(through(filter, {1, 0, 0}), testing::ElementsAre(1.0F, 2.5F, 0.0F));
    EXPECT_THAT(through(filter, {0, 1}), testing::ElementsAre(-0.25F, 0.5625F));
    filter.reset();
    EXPECT_THAT(through(filter, {1, 0, 0}), testing::ElementsAre(1.0F, 2.5F, 0.0F));

    const float doubled = 2.0F;
    quenlis_filter one(1, a, &doubled);
    EXPECT_THAT(through(one, {1, 2, 3}), testing::ElementsAre(2.0F, 4.0F, 6.0F));
    quenlis_filter silent;
    EXPECT_THAT(through(silent, {1, 2, 3}), testing::Each(0.0F));
}

TEST(Biquad, DesignsEveryKind) {
    // For +6 dB and Q = 1 / sqrt(2), dB at 40 Hz, the corner, 2 and 20 kHz of each type, from the analogue prototypes
    // at s = j tan(pi f / 48000) / tan(pi / 48); a notch is deeper than 75 dB.
    const std::vector<double> responses[] = {
        {0, -3.01, -12.37, -70.2}, {-55.9, -3.01, -0.26, 0}, {-24.9, 0, -3.31, -32.1}, {0, -75, -2.73, 0},
        {0, 6, 2.81, 0},           {6, 3, 0.37, 0},          {0, 3, 5.63, 6}};
    for (int type = 0; type < 7; ++type) {
        quenlis_biquad filter(type, 6.0F, 1000.0F, 48000.0F, 0.70710677F);
        std::vector<double> gains;
        for (const double hz : {40.0, 1000.0, 2000.0, 20000.0})
            gains.push_back(std::max(gain_db(filter, hz), -75.0));
        EXPECT_THAT(gains, testing::Pointwise(testing::DoubleNear(0.15), responses[type])) << type;
    }
}

TEST(Biquad, EditsKeepTheOtherValuesAndTheHistory) {
    quenlis_biquad edited(0, 3.0F, 500.0F, 48000.0F, 2.0F);
    through(edited, noise(64, 1));
    const auto expect_design = [&](int type, float dbGain, float freq, float Q) {
        quenlis_biquad designed(type, dbGain, freq, 48000.0F, Q);
        EXPECT_TRUE(same_bits(samples(designed.get_a_coefficients(), designed.get_a_coefficients() + 3),
                              samples(edited.get_a_coefficients(), edited.get_a_coefficients() + 3)));
    };
    edited.edit_BiQuad(1, 0.0F, 99.0F, 8000.0F, 1.0F);
    EXPECT_EQ(edited.get_type(), 0) << "installed, not stored";
    edited.edit_type(4);
    expect_design(4, 3.0F, 500.0F, 2.0F);
    edited.edit_dbGain(-6.0F);
    expect_design(4, -6.0F, 500.0F, 2.0F);
    edited.edit_freq(2000.0F);
    expect_design(4, -6.0F, 2000.0F, 2.0F);
    edited.edit_Q(1.0F);
    expect_design(4, -6.0F, 2000.0F, 1.0F);
    EXPECT_EQ(edited.get_dbGain(), -6.0F);
    EXPECT_NE(through(edited, {0.0F})[0], 0.0F) << "what was heard before rings on";
}

TEST(Biquad, OfNoKindGivesNaNAndShelvesIgnoreQ) {
    for (const int type : {-1, 7}) {
        quenlis_biquad none(type, 6.0F, 1000.0F, 48000.0F, 1.0F);
        EXPECT_EQ(none.get_a_coefficients()[0], 1.0F);
        EXPECT_TRUE(std::isnan(through(none, {1.0F})[0]));
    }
    for (const int type : {5, 6}) {
        quenlis_biquad narrow(type, 6.0F, 1000.0F, 48000.0F, 10.0F);
        quenlis_biquad wide(type, 6.0F, 1000.0F, 48000.0F, 0.1F);
        EXPECT_TRUE(same_bits(through(wide, noise(64, 2)), through(narrow, noise(64, 2))));
    }
}

} // namespace
