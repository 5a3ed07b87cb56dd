#include "render/crosstalk.h"

#include "dsp/vector_checks.h"
#include "kit/host.h"
#include "render/centre_channel.h"
#include "render/crosstalk_tables.h"
#include "voice/limiter.h"

namespace {

using namespace test_kit;

constexpr int frame = 1024;

// Left, right and centre. Slopes and quotients of these are exact. The last three have a foot that is not finite, the
// first two of them by a slope whose reciprocal overflows: equal magnitudes take the right one.
constexpr complex32f split_cases[][3] = {
    {{3, 4}, {3, 4}, {3, 4}},
    {{1, 1}, {1, 3}, {1, 0}},
    {{1, 2}, {3, 2}, {0, 2}},
    {{3, 4}, {0, 0}, {0, 0}},
    {{1, 2}, {-1, -2}, {0, 0}},
    {{0, 2}, {2, 0}, {1, 1}},
    {{2, 1}, {4, 4}, {2, 1}},
    {{4, 4}, {2, 1}, {2, 1}},
    {{0, 0}, {0, 0}, {0, 0}},
    {{1, 1e-40F}, {-1, 2e-40F}, {-1, 2e-40F}},
    {{1, 1e-40F}, {-2, 2e-40F}, {1, 1e-40F}},
    {{1e-40F, 1e10F}, {0, -2e10F}, {1e-40F, 1e10F}},
};

TEST(CentreSeparation, FollowsItsRuleWithTheSameBitsOnEveryTarget) {
    const samples values = vector_checks::test_values(4 * centre_bins, 9);
    std::vector<complex32f> left(centre_bins);
    std::vector<complex32f> right(centre_bins);
    for (std::size_t k = 0; k < left.size(); ++k) {
        left[k] = {values[4 * k], values[4 * k + 1]};
        right[k] = {values[4 * k + 2], values[4 * k + 3]};
    }
    left[0] = {3, 1}; // two real bins in one
    right[0] = {1, -5};
    for (std::size_t i = 0; i < std::size(split_cases); ++i) {
        left[i + 1] = split_cases[i][0];
        right[i + 1] = split_cases[i][1];
    }
    samples reference;
    on_every_target([&](const char* name) {
        std::vector<complex32f> l = left;
        std::vector<complex32f> r = right;
        std::vector<complex32f> c(centre_bins);
        separate_left_right_to_center(l.data(), r.data(), c.data());
        EXPECT_THAT(c[0], testing::FieldsAre(2, -2));
        EXPECT_THAT(l[0], testing::FieldsAre(1, 3));
        EXPECT_THAT(r[0], testing::FieldsAre(-1, -3));
        std::size_t bin = 0;
        for (const auto& [from_left, from_right, centre] : split_cases) {
            EXPECT_THAT(c[++bin], testing::FieldsAre(centre.re, centre.im)) << name << bin;
            EXPECT_EQ(l[bin].re, from_left.re - centre.re);
            EXPECT_EQ(r[bin].im, from_right.im - centre.im);
        }
        samples all;
        for (const auto* bins : {&l, &r, &c})
            for (const complex32f value : *bins)
                all.insert(all.end(), {value.re, value.im});
        if (reference.empty())
            reference = all;
        EXPECT_TRUE(vector_checks::same_blocks(reference, all)) << name;
    });
}

/// A renderer of its own flags.
struct renderer_of {
    explicit renderer_of(int block)
        : block_(block), renderer_(block, &flags, nullptr, nullptr, nullptr, nullptr) {}

    stereo render(const stereo& in) {
        return in_planar_blocks(in, static_cast<std::size_t>(block_),
                                [this](float* x) { renderer_.process(x, x); });
    }

    quenlis_flags flags;

private:
    int block_;
    quenlis_xtc renderer_;
};

TEST(Rendering, DelaysAndLiftsWhatIsCommonAndWaitsForFramesInTheKnownCalls) {
    const std::pair<int, std::vector<int>> cases[] = {{480, {1, 2, 17}}, {512, {1}}, {960, {1}}, {1024, {}}};
    for (const auto& [block, silent_calls] : cases) {
        constexpr std::size_t calls = 60;
        samples mono = noise(calls * static_cast<std::size_t>(block), 3, 0.5F);
        std::fill(mono.end() - 12 * frame, mono.end(), 0.0F);
        samples expected;
        std::size_t next = 0;
        for (int call = 1; call <= static_cast<int>(calls); ++call)
            for (int i = 0; i < block; ++i) {
                const bool waits = std::count(silent_calls.begin(), silent_calls.end(), call) != 0;
                const std::size_t due = waits ? 0 : next++;
                expected.push_back(due < 1536 ? 0.0F : 1.3225F * mono[due - 1536]);
            }
        const stereo out = renderer_of(block).render({mono, mono});
        EXPECT_TRUE(error_below(expected, out.left, -125.0)) << block;
        EXPECT_TRUE(same_bits(out.left, out.right)) << block;
        EXPECT_EQ(peak({out.left.end() - 4 * frame, out.left.end()}), 0.0F) << "silence after silence";
    }
}

TEST(Rendering, OfOneSideIsTheFiltersConvolutionAndAnAngleCountsFromTheNextFrame) {
    const std::vector<int> angles = {15, 15, 15, 45, 45, 0, 0, 0};
    const std::size_t size = angles.size() * frame;
    // Differences of differences: next to nothing at bin 0, whose mean passes for common.
    samples side = noise(size, 4, 0.1F);
    for (int order = 0; order < 4; ++order)
        std::adjacent_difference(side.begin(), side.end(), side.begin());
    std::fill(side.begin(), side.begin() + frame / 2, 0.0F); // the first half frame has but one window
    const auto filtered = [&](const float(*filters)[crosstalk_taps]) {
        samples out(size);
        for (std::size_t i = frame / 2; i < size; ++i)
            for (std::size_t tap = 0; tap < crosstalk_taps && i + tap < size; ++tap)
                out[i + tap] += 1.08F * side[i - frame / 2] * filters[angles[i / frame]][tap];
        return out;
    };
    for (const bool on_the_left : {true, false}) {
        renderer_of one(frame);
        stereo out;
        for (std::size_t f = 0; f < angles.size(); ++f) {
            one.flags.set_state(QNL_CONTROL_HALF_SPAN_ANGLE, angles[f]);
            const samples now = part(side, f * frame, (f + 1) * frame);
            const samples nothing(frame);
            const stereo block = one.render(on_the_left ? stereo{now, nothing} : stereo{nothing, now});
            out = {planar(out.left, block.left), planar(out.right, block.right)};
        }
        constexpr double bin_0_db = -70.0; // of the onset
        EXPECT_TRUE(
            error_below(filtered(on_the_left ? ltol_speaker_irs : rtol_speaker_irs), out.left, bin_0_db));
        EXPECT_TRUE(
            error_below(filtered(on_the_left ? ltor_speaker_irs : rtor_speaker_irs), out.right, bin_0_db));
    }
}

TEST(Rendering, StandsBeforeTheLimiterOfAListenerWithLoudspeakers) {
    constexpr int block = 480;
    engine engine({2, 2});
    engine.set(2, QNL_CONTROL_DEVICE, QNL_DEVICE_SPEAKER);
    renderer_of one(block);
    quenlis_limiter limiter(-0.2F, 0.2F, 48000, 2, block);
    for (std::uint32_t period = 0; period < 8; ++period) {
        const stereo talk = {noise(block, period), noise(block, period + 100)};
        engine.push(1, planar(talk.left, talk.right), block);
        const stereo rendered = one.render(talk);
        samples expected = planar(rendered.left, rendered.right);
        limiter.process(expected.data(), expected.data());
        EXPECT_TRUE(same_bits(expected, engine.pull(2).samples)) << period;
    }
}

} // namespace
