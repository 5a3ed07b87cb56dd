#include "dsp/resampler.h"

#include "vector_checks.h"

namespace {

using namespace test_kit;

struct block_ratio {
    int input_rate;
    int output_rate;
    std::size_t in; ///< samples of an input block
    std::size_t out;
    std::size_t made; ///< of an output block

    quenlis_resampler resampler(int channels) const {
        return {input_rate, output_rate, channels, static_cast<int>(out)};
    }
};

// The last two have no exact ratio of blocks: one makes a sample less than its block has room for.
const std::vector<block_ratio> ratios = {
    {8000, 48000, 80, 480, 480},    {16000, 48000, 160, 480, 480},  {24000, 48000, 256, 512, 512},
    {32000, 48000, 320, 480, 480},  {48000, 8000, 480, 80, 80},     {48000, 16000, 960, 320, 320},
    {48000, 24000, 1024, 512, 512}, {48000, 32000, 480, 320, 320},  {44100, 48000, 441, 480, 480},
    {48000, 44100, 480, 441, 441},  {22050, 48000, 441, 960, 960},  {11025, 48000, 147, 640, 640},
    {100, 48000, 1, 480, 480},      {48000, 32000, 1024, 683, 683}, {32000, 48000, 682, 1024, 1023},
};

/// The block from `start` on by the formula of the filter, in double precision: 128 input samples late, and 0.98 times
/// the input.
samples block_by_definition(const block_ratio& ratio, const samples& input, std::size_t start) {
    const double step = static_cast<double>(ratio.input_rate) / ratio.output_rate;
    const double cut_off = std::min(1.0, 1.0 / step);
    const auto prototype = [=](double x) {
        const double share = x / 128.0;
        const double window = std::cyl_bessel_i(0.0, 9.0 * std::sqrt(std::max(0.0, 1.0 - share * share)));
        const double angle = M_PI * x * cut_off;
        return window * (x == 0.0 ? 0.95 : std::sin(0.95 * angle) / angle);
    };
    const int phases = ratio.output_rate / std::gcd(ratio.input_rate, ratio.output_rate);
    double sum = prototype(0.0);
    for (int i = 1; i <= 128 * phases; ++i)
        sum += 2.0 * prototype(static_cast<double>(i) / phases);
    samples output;
    for (std::size_t i = 0; i < ratio.made; ++i) {
        const double centre = static_cast<double>(start) + static_cast<double>(i) * step - 128.0;
        double value = 0.0;
        for (auto k = static_cast<int>(std::ceil(centre - 128.0)); k <= centre + 128.0; ++k)
            value += k < 0 ? 0.0 : input[static_cast<std::size_t>(k)] * prototype(k - centre);
        output.push_back(static_cast<float>(0.98 * phases / sum * value));
    }
    return output;
}

// Taps and output are rounded to floats, by 2^-25 at most. A tap in the wrong place or a wrong phase lifts the
// error above -100 dB, a delay wrong by one sample above 0.
constexpr double rounding_db = -140.0;

TEST(Resampler, FollowsItsFormulaAtEveryRatio) {
    for (const block_ratio& ratio : ratios) {
        SCOPED_TRACE(testing::Message() << ratio.input_rate << " to " << ratio.output_rate);
        quenlis_resampler resampler = ratio.resampler(1);
        const std::size_t blocks = 600 / ratio.in + 2; // more than the filter's span
        const samples input = planar(noise(blocks * ratio.in, 3), samples(blocks * ratio.in, 1.0F));
        samples output(ratio.out, 7.0F);
        const auto run = [&](std::size_t first, std::size_t last) {
            for (std::size_t block = first; block < last; ++block)
                resampler.process(&input[block * ratio.in], output.data());
            return part(output, 0, ratio.made);
        };
        const samples expected = block_by_definition(ratio, input, (blocks - 1) * ratio.in);
        EXPECT_TRUE(error_below(expected, run(0, blocks), rounding_db));
        // Of a constant; phases differ by what the filter lets pass of images.
        EXPECT_THAT(run(blocks, 2 * blocks), testing::Each(testing::FloatNear(0.98F, 6e-6F)));
        EXPECT_THAT(part(output, ratio.made, ratio.out), testing::Each(7.0F)); // not written
    }
}

TEST(Resampler, InPlaceChannelsStayApartAndInsideTheirBlocksWithTheSameBitsOnEveryTarget) {
    for (const block_ratio& ratio : ratios) {
        const auto size = static_cast<int>(2 * std::max(ratio.in, ratio.out));
        const samples usual = noise(static_cast<std::size_t>(size), 1);
        const samples wild = vector_checks::test_values(size, 7);
        quenlis_resampler left = ratio.resampler(1);
        quenlis_resampler right = ratio.resampler(1);
        std::vector<samples> expected;
        for (const samples& block : {usual, wild, usual}) {
            expected.push_back(block); // what is not written stays
            left.process(block.data(), &expected.back()[0]);
            right.process(&block[ratio.in], &expected.back()[ratio.out]);
        }
        on_every_target([&](const char* target) {
            quenlis_resampler stereo = ratio.resampler(2);
            std::size_t period = 0;
            for (const samples& block : {usual, wild, usual}) {
                samples audio = vector_checks::walled(0, block);
                float* const inside = &audio[vector_checks::wall];
                expect_no_allocation([&] { stereo.process(inside, inside); });
                EXPECT_TRUE(vector_checks::same_blocks(vector_checks::walled(0, expected[period++]), audio))
                    << target << " " << ratio.input_rate << " to " << ratio.output_rate;
            }
        });
    }
}

TEST(Resampler, WithoutChannelsDoesNothing) {
    for (const int channels : {0, -1})
        quenlis_resampler(16000, 48000, channels, 480).process(nullptr, nullptr);
}

} // namespace
